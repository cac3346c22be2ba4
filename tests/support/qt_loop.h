#pragma once

#include "support/wait.h"

#include <QCoreApplication>
#include <QEvent>

#include <atomic>
#include <thread>

/** Qt without the library's start: for tests of its insides that play the Qt thread themselves. */
namespace marlune::test {

/** Makes the application object, the first time. */
inline void have_application()
{
    static int argument_count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication application(argument_count, arguments);
}

/** Does what a turn of the event loop does. */
inline void serve_events()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/** Serves this thread's events until `holds` is true; false when it still is not after the cap. */
template <typename Predicate>
bool serve_until(Predicate holds)
{
    return wait_until([&] {
        serve_events();
        return holds();
    });
}

/** Runs `caller` on a thread of its own while this thread's events are served until it has ended. */
template <typename Caller>
void serve_while(Caller caller)
{
    std::atomic<bool> done = false;
    std::thread thread([&] {
        caller();
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    thread.join();
}

}  // namespace marlune::test
