#pragma once

#include "support/wait.h"

#include <QCoreApplication>
#include <QEvent>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

/** Qt without the library's start: for tests of its insides that play the Qt thread themselves. */
namespace marlune::test {

/** Ends with the last test: what Qt has at the end of the process does not bear it that late. */
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

/** Makes the application object, the first time. */
template <typename Application = QCoreApplication>
void have_application()
{
    static const auto* const environment =
        testing::AddGlobalTestEnvironment(new ApplicationOfTests<Application>);
    static_cast<void>(environment);
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
