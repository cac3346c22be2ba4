#include "runtime/host_callback.h"

#include "marlune/app.h"

#include <QMetaObject>

#include <deque>

namespace marlune {

namespace {

thread_local int depth = 0;

struct Waiting {
    std::function<void()> work;
    QPointer<QObject> receiver;
};

/** Used on the Qt thread only. */
std::deque<Waiting> all_waiting;

}  // namespace

HostCallbackScope::HostCallbackScope()
{
    ++depth;
}

HostCallbackScope::~HostCallbackScope()
{
    if (--depth > 0 || !any_waiting())
        return;
    auto* const context = static_cast<QObject*>(MARLUNE_CTX);
    QMetaObject::invokeMethod(context, &HostCallbackScope::run_waiting, Qt::QueuedConnection);
}

bool HostCallbackScope::active()
{
    return depth > 0;
}

void HostCallbackScope::run_outside(std::function<void()> work, QObject* receiver)
{
    if (active())
        put_off(std::move(work), receiver);
    else
        work();
}

void HostCallbackScope::discard_waiting()
{
    all_waiting.clear();
}

bool HostCallbackScope::any_waiting()
{
    return !all_waiting.empty();
}

void HostCallbackScope::put_off(std::function<void()> work, QObject* receiver)
{
    all_waiting.push_back({std::move(work), receiver});
}

/** One by one: each may process events, and an exception must not lose the others. */
void HostCallbackScope::run_waiting()
{
    while (!active() && any_waiting()) {
        const Waiting next = std::move(all_waiting.front());
        all_waiting.pop_front();
        try {
            next.work();
        } catch (...) {
            report_exception(next.receiver);
        }
    }
}

}  // namespace marlune
