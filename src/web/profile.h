#pragma once

#include <QString>

#include <cstdint>
#include <string>

class QQuickWebEngineProfile;
class QWebEngineUrlSchemeHandler;

namespace marlune {

/**
 * Configures the engine's default profile for all web views. Call once, after the application
 * object has been created.
 */
void set_up_shared_profile();

/**
 * Installs the handler for the "res" scheme of all web views. Call once, after
 * set_up_shared_profile().
 */
void serve_res(QWebEngineUrlSchemeHandler* handler);

/**
 * Returns the profile of all web views; null before set_up_shared_profile(). Callable on any
 * thread.
 */
QQuickWebEngineProfile* shared_profile();

/** Like shared_profile(), but records that a view is about to create pages in it. */
QQuickWebEngineProfile* profile_for_pages();

/** Whether and where the profile stores data of pages. Only on the Qt thread. */
struct Record {
    bool off = true;
    QString folder;  // empty: the engine's default
};

/** Returns the current record. */
const Record& record();

/** Whether the change requires that no pages exist. */
bool record_ends_pages(const Record& next);

/** Changes the record. After that, shared_profile() may return another profile. */
void set_record(const Record& next);

/** Sets the user agent; an empty text restores the engine's own. On the Qt thread. */
void set_user_agent(const QString& text);

/**
 * Sets a cookie. `same_site` is "none", "lax" or "strict"; anything else means the default.
 * `expiry` is in s since 1970.
 */
void set_cookie(QQuickWebEngineProfile& profile, const QString& domain, const QString& path,
                const std::string& name, const std::string& value, bool secure,
                const std::string& same_site, int64_t expiry);

}  // namespace marlune
