#include "web/profile.h"

#include "runtime/live_objects.h"
#include "views/pipeline_file.h"
#include "web/engine_version.h"

#include <QDateTime>
#include <QNetworkCookie>
#include <QQuickWebEngineProfile>
#include <QUrl>
#include <QWebEngineCookieStore>

#include <atomic>
#include <list>
#include <string_view>

namespace marlune {

namespace {

/**
 * What the engine of Qt 6.11 has looked up of a profile's settings for its extensions, it goes on using
 * when the profile has got other ones: it crashes with the next page. So a profile that has had pages is
 * left as it is, and another one takes its place.
 */
constexpr bool keeps_settings = engine_is_new;

/** Stays where it is once it has had pages. */
struct Profile {
    QQuickWebEngineProfile* engine_profile;
    Record record;
    // Calls are carried to it until the library stops; only then does Qt delete it.
    LiveObject live{engine_profile};
};

std::atomic<QQuickWebEngineProfile*> shared = nullptr;
bool has_had_pages = false;
QString own_user_agent;
QWebEngineUrlSchemeHandler* res_handler = nullptr;

std::list<Profile>& profiles()
{
    static std::list<Profile> all;
    return all;
}

Profile& current()
{
    for (Profile& profile : profiles()) {
        if (profile.engine_profile == shared)
            return profile;
    }
    return profiles().front();
}

struct SameSiteName {
    std::string_view name;
    QNetworkCookie::SameSite policy;
};

constexpr SameSiteName same_site_names[] = {
    {"default", QNetworkCookie::SameSite::Default},
    {"none", QNetworkCookie::SameSite::None},
    {"lax", QNetworkCookie::SameSite::Lax},
    {"strict", QNetworkCookie::SameSite::Strict},
};

QNetworkCookie::SameSite same_site_policy(std::string_view text)
{
    for (const auto& [name, policy] : same_site_names) {
        if (name == text)
            return policy;
    }
    return QNetworkCookie::SameSite::Default;
}

QQuickWebEngineProfile& configure(QQuickWebEngineProfile& profile)
{
    profile.setSpellCheckEnabled(false);
    profile.setStorageName(QStringLiteral("Default"));
    profile.setPersistentCookiesPolicy(QQuickWebEngineProfile::ForcePersistentCookies);
    // The settings of the view that is asked decide, not what another one has answered once.
    profile.setPersistentPermissionsPolicy(
        QQuickWebEngineProfile::PersistentPermissionsPolicy::AskEveryTime);
    return profile;
}

bool is_elsewhere(const Record& record, const Record& other)
{
    return record.off != other.off || (!record.off && record.folder != other.folder);
}

void move(Profile& profile, const Record& next)
{
    QQuickWebEngineProfile& engine_profile = *profile.engine_profile;
    // Off the record it is of no use, so what has had pages need not get it.
    const bool uses_folder = !next.off || !keeps_settings || !has_had_pages;
    if (uses_folder && profile.record.folder != next.folder) {
        engine_profile.setPersistentStoragePath(next.folder);
        engine_profile.setCachePath(next.folder);
    }
    engine_profile.setOffTheRecord(next.off);
    engine_profile.setPersistentCookiesPolicy(next.off
                                                  ? QQuickWebEngineProfile::NoPersistentCookies
                                                  : QQuickWebEngineProfile::ForcePersistentCookies);
    profile.record = next;
    set_pipeline_folder(next.folder);
}

/** Off the record. */
QQuickWebEngineProfile* make_profile(QObject* parent)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 9, 0)
    return new QQuickWebEngineProfile(QString(), parent);  // the other constructor warns of itself
#else
    return new QQuickWebEngineProfile(parent);
#endif
}

/** The one that is there already, or a new one: no two may keep their files in the same place. */
Profile& profile_with(const Record& wanted)
{
    for (Profile& profile : profiles()) {
        if (!is_elsewhere(profile.record, wanted))
            return profile;
    }
    QQuickWebEngineProfile& first = *profiles().front().engine_profile;
    Profile& added = profiles().emplace_back(&configure(*make_profile(&first)));
    added.engine_profile->installUrlSchemeHandler("res", res_handler);
    return added;
}

}  // namespace

QQuickWebEngineProfile* shared_profile()
{
    return shared.load(std::memory_order_acquire);
}

QQuickWebEngineProfile* profile_for_pages()
{
    has_had_pages = true;
    return shared_profile();
}

void set_up_shared_profile()
{
    QQuickWebEngineProfile& profile = configure(*QQuickWebEngineProfile::defaultProfile());
    own_user_agent = profile.httpUserAgent();
    profiles().emplace_back(&profile);
    shared.store(&profile, std::memory_order_release);
}

void serve_res(QWebEngineUrlSchemeHandler* handler)
{
    res_handler = handler;
    shared_profile()->installUrlSchemeHandler("res", handler);
}

const Record& record()
{
    return current().record;
}

bool record_ends_pages(const Record& next)
{
    if (keeps_settings && has_had_pages)
        return is_elsewhere(record(), next);
    return next.off && !record().off;
}

void set_record(const Record& next)
{
    if (!keeps_settings || !has_had_pages || !is_elsewhere(record(), next))
        return move(current(), next);
    const QString user_agent = shared_profile()->httpUserAgent();
    Profile& profile = profile_with(next);
    move(profile, next);
    shared.store(profile.engine_profile, std::memory_order_release);
    set_user_agent(user_agent);
}

void set_user_agent(const QString& text)
{
    shared_profile()->setHttpUserAgent(text.isEmpty() ? own_user_agent : text);
}

void set_cookie(QQuickWebEngineProfile& profile, const QString& domain, const QString& path,
                const std::string& name, const std::string& value, bool secure,
                const std::string& same_site, int64_t expiry)
{
    QNetworkCookie cookie;
    cookie.setDomain(domain);
    cookie.setName(QByteArray::fromStdString(name));
    cookie.setPath(path);
    cookie.setSecure(secure);
    cookie.setExpirationDate(QDateTime::fromSecsSinceEpoch(expiry));
    cookie.setValue(QByteArray::fromStdString(value));
    cookie.setSameSitePolicy(same_site_policy(same_site));
    profile.cookieStore()->setCookie(cookie, QUrl());
}

}  // namespace marlune
