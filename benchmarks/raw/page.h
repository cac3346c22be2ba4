#pragma once

#include "support/gpu.h"
#include "support/page_answers.h"
#include "support/picture.h"

#include <cstdint>
#include <string>

class QObject;

namespace marlune::bench {

class RawScene;
class RawService;

/**
 * The host's side of a page in raw Qt, with the same object as BenchPage. `qt_thread` is any object
 * that lives on that thread.
 */
class RawPage {
public:
    /** Starts to load the page of this URL, and draws a first frame without it. */
    RawPage(QObject* qt_thread, const Gpu& gpu, Picture picture, const std::string& url);
    ~RawPage();
    RawPage(const RawPage&) = delete;
    RawPage& operator=(const RawPage&) = delete;

    /** The scheme's URL of the files; see raw_scheme.h. */
    static constexpr auto origin = "raw://bench";

    void run(const std::string& script);
    void render() const;
    uint64_t texture() const { return texture_; }

    void emit_tick(int number);
    void set_number(int number);

    PageAnswers& answers() { return answers_; }

private:
    void set_up(const Gpu& gpu, Picture picture, const std::string& url);

    PageAnswers answers_;
    QObject* qt_thread_;
    RawService* service_ = nullptr;
    RawScene* scene_ = nullptr;
    uint64_t texture_ = 0;
};

}  // namespace marlune::bench
