#include "web/profile.h"

#include "runtime/live_objects.h"

#include <QQuickWebEngineProfile>

#include <atomic>

namespace marlune {

namespace {

std::atomic<QQuickWebEngineProfile*> profile = nullptr;

}  // namespace

QQuickWebEngineProfile* shared_profile()
{
    return profile.load(std::memory_order_acquire);
}

QQuickWebEngineProfile* set_up_shared_profile()
{
    QQuickWebEngineProfile* const shared = QQuickWebEngineProfile::defaultProfile();
    shared->setSpellCheckEnabled(false);
    shared->setStorageName(QStringLiteral("Default"));
    shared->setPersistentCookiesPolicy(QQuickWebEngineProfile::ForcePersistentCookies);
    // The settings of the view that is asked decide, not what another one has answered once.
    shared->setPersistentPermissionsPolicy(
        QQuickWebEngineProfile::PersistentPermissionsPolicy::AskEveryTime);

    // Calls are carried to it until the library stops; only then does Qt delete it.
    static const LiveObject live(shared);
    profile.store(shared, std::memory_order_release);
    return shared;
}

}  // namespace marlune
