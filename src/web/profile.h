#pragma once

#include <QString>

#include <cstdint>
#include <string>

class QQuickWebEngineProfile;
class QWebEngineUrlSchemeHandler;

namespace marlune {

/** Configures the engine's default profile for all web views. Once, when there is an application object. */
void set_up_shared_profile();

/** Has the handler serve "res" for all web views. Once, after set_up_shared_profile(). */
void serve_res(QWebEngineUrlSchemeHandler* handler);

/** The profile of all web views, for any thread; null before set_up_shared_profile(). */
QQuickWebEngineProfile* shared_profile();

/** The same, for a view that is about to have pages. */
QQuickWebEngineProfile* profile_for_pages();

/** What is kept of pages. All on the Qt thread. */
struct Record {
    bool off = true;
    QString folder;  // the engine's own where it is empty
};

/** As it is now. */
const Record& record();

/** Whether pages do not survive the change, so that none may be there. */
bool record_ends_pages(const Record& next);

/** Changes it, which may make shared_profile() another one. */
void set_record(const Record& next);

/** An empty one is the engine's own. On the Qt thread. */
void set_user_agent(const QString& text);

/** `same_site` is "none", "lax" or "strict", else the default; `expiry` is in s since 1970. */
void set_cookie(QQuickWebEngineProfile& profile, const QString& domain, const QString& path,
                const std::string& name, const std::string& value, bool secure,
                const std::string& same_site, int64_t expiry);

}  // namespace marlune
