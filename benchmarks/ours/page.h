#pragma once

#include "support/gpu.h"
#include "support/page_answers.h"
#include "support/picture.h"

#include <marlune/context_object_std.h>
#include <marlune/mweb_view.h>

#include <cstdint>
#include <string>

namespace marlune::bench {

/**
 * A page in a web view of the library, with an object "bench" of the host: method `add(number)`,
 * which returns the next number, signal `tick(number)`, property `number`.
 */
class BenchPage {
public:
    /** Starts to load the page of this URL, and draws a first frame without it. */
    BenchPage(Gpu& gpu, Picture picture, const std::string& url);
    ~BenchPage();
    BenchPage(const BenchPage&) = delete;
    BenchPage& operator=(const BenchPage&) = delete;

    /** The scheme's URL of the files. */
    static constexpr auto origin = "res://bench";

    void run(const std::string& script) { facade_.run_javascript(script); }
    void render() const { facade_.render(); }
    uint64_t texture() const { return facade_.get_texture(); }

    void emit_tick(int number);
    void set_number(int number);

    PageAnswers& answers() { return answers_; }

private:
    db::ContainerStd add(const db::ContainerStd& number);

    PageAnswers answers_;
    db::MethodInfoStd method_;
    db::MethodInfoStd signal_;
    db::PropertyInfoStd property_;
    db::AbstractContextObjectStd object_;
    MWebView facade_;
};

}  // namespace marlune::bench
