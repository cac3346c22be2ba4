#pragma once

#include <future>
#include <thread>

class QObject;

namespace marlune::bench {

/** Raw Qt started the way the library starts it: an application on a thread, the web engine ready. */
class RawApplication {
public:
    /** Returns once calls can be carried to the thread. */
    RawApplication();
    ~RawApplication();
    RawApplication(const RawApplication&) = delete;
    RawApplication& operator=(const RawApplication&) = delete;

    /** An object of the Qt thread. */
    QObject* qt_thread() const { return qt_thread_; }

private:
    void run();

    std::promise<QObject*> ready_;
    std::thread thread_;
    QObject* qt_thread_;
};

}  // namespace marlune::bench
