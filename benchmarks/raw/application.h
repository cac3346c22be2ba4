#pragma once

#include <future>
#include <thread>

class QObject;

namespace marlune::bench {

/** Starts raw Qt like the library: an application on a thread, with the web engine ready. */
class RawApplication {
public:
    /** Returns once the thread can serve calls. */
    RawApplication();
    ~RawApplication();
    RawApplication(const RawApplication&) = delete;
    RawApplication& operator=(const RawApplication&) = delete;

    /** An object that lives on the Qt thread. */
    QObject* qt_thread() const { return qt_thread_; }

private:
    void run();

    std::promise<QObject*> ready_;
    std::thread thread_;
    QObject* qt_thread_;
};

}  // namespace marlune::bench
