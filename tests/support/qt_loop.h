#pragma once

#include "support/wait.h"

#include <QCoreApplication>
#include <QEvent>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

/** Qt without the library's start, for tests of internal code that act as the Qt thread. */
namespace marlune::test {

/**
 * Ends after the last test: Qt's own global objects are destroyed at the end of the process, which
 * is too late for the application.
 */
template <typename Application>
class ApplicationOfTests : public testing::Environment {
public:
    void TearDown() override { application_.reset(); }

private:
    int argument_count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<Application> application_ =
        std::make_unique<Application>(argument_count_, arguments_);
};

/** Creates the application object in the first call. */
template <typename Application = QCoreApplication>
void have_application()
{
    static const auto* const environment =
        testing::AddGlobalTestEnvironment(new ApplicationOfTests<Application>);
    static_cast<void>(environment);
}

/** Does the work of one turn of the event loop. */
inline void serve_events()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/**
 * Serves this thread's events until `holds` is true; returns false if that takes longer than the
 * cap.
 */
template <typename Predicate>
bool serve_until(Predicate holds)
{
    return wait_until([&] {
        serve_events();
        return holds();
    });
}

/** Runs `caller` on a thread of its own and serves this thread's events until it has ended. */
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
