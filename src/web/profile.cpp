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
 * The engine of Qt 6.11 caches settings of a profile for its extensions. If the settings of a
 * profile that has had pages change, the engine crashes with the next page. Such a profile is
 * therefore left unchanged, and another one replaces it.
 */
constexpr bool keeps_settings = engine_is_new;

/** Keeps its storage location once it has had pages. */
struct Profile {
    QQuickWebEngineProfile* engine_profile;
    Record record;
    // Calls run on this object until the library stops; only then does Qt delete it.
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
    // The settings of the requesting view decide, not an answer that another view has given.
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
    // Off the record, the folder is not used, so a profile that has had pages need not get it.
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

/** Returns a new profile, off the record. */
QQuickWebEngineProfile* make_profile(QObject* parent)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 9, 0)
    return new QQuickWebEngineProfile(QString(), parent);  // the other constructor logs a warning
#else
    return new QQuickWebEngineProfile(parent);
#endif
}

/**
 * Returns the existing profile with this record, or a new one: no two profiles may use the same
 * folder.
 */
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
