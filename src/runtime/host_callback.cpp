#include "runtime/host_callback.h"

#include "marlune/app.h"

#include <QMetaObject>

#include <vector>

namespace marlune {

namespace {

thread_local int depth = 0;

/** Belongs to the Qt thread. */
std::vector<std::function<void()>> deferred;

void run_deferred()
{
    for (const auto& work : std::exchange(deferred, {}))
        HostCallbackScope::run_outside(work);
}

}  // namespace

HostCallbackScope::HostCallbackScope()
{
    ++depth;
}

HostCallbackScope::~HostCallbackScope()
{
    if (--depth > 0 || deferred.empty())
        return;
    auto* const context = static_cast<QObject*>(MARLUNE_CTX);
    QMetaObject::invokeMethod(context, run_deferred, Qt::QueuedConnection);
}

bool HostCallbackScope::active()
{
    return depth > 0;
}

void HostCallbackScope::run_outside(std::function<void()> work)
{
    if (active())
        deferred.push_back(std::move(work));
    else
        work();
}

}  // namespace marlune
