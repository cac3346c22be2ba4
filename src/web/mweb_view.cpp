#include "marlune/web_view.h"

#include "runtime/call.h"
#include "runtime/host_callback.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"
#include "web/profile.h"
#include "web/web_view.h"

#include "marlune/options.h"

#include <QDateTime>
#include <QNetworkCookie>
#include <QQuickWebEngineProfile>
#include <QWebEngineCookieStore>

#include <cstdio>
#include <utility>

namespace marlune {

namespace {

constexpr double default_zoom = 2.0;
constexpr double smallest_zoom = 0.25;
constexpr double largest_zoom = 5.0;

// How the settings' types cross the border.
template <typename Value>
Value to_qt(Value value)
{
    return value;
}

QString to_qt(const std::string& text)
{
    return QString::fromStdString(text);
}

template <typename Value>
Value to_host(Value value)
{
    return value;
}

std::string to_host(const QString& text)
{
    return text.toStdString();
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

}  // namespace

MWebView::MWebView()
{
    view_ = make_view<WebView>("marlune::MWebView", "marlune::_create_webview");
}

void MWebView::reset() const
{
    MView::reset();
}

bool MWebView::load() const
{
    return call<WebView>("marlune::MWebView::load", view_, Delivery::Queued, false,
                         [](WebView& view) { return view.load(); });
}

void MWebView::set_url(std::string url) const
{
    call<WebView>(
        "marlune::MWebView::set_url", view_, Delivery::Queued,
        [url = std::move(url)](WebView& view) { view.set_url(QString::fromStdString(url)); });
}

std::string MWebView::get_url() const
{
    return call<WebView>("marlune::MWebView::get_url", view_, Delivery::Queued, std::string(),
                         [](WebView& view) { return view.url().toStdString(); });
}

void MWebView::load_html(std::string html, std::string base_url) const
{
    call<WebView>("marlune::MWebView::load_html", view_, Delivery::Queued,
                  [html = std::move(html), base_url = std::move(base_url)](WebView& view) {
                      view.load_html(QString::fromStdString(html),
                                     QString::fromStdString(base_url));
                  });
}

void MWebView::back() const
{
    call<WebView>("marlune::MWebView::back", view_, Delivery::Queued, &WebView::back);
}

void MWebView::forward() const
{
    call<WebView>("marlune::MWebView::forward", view_, Delivery::Queued, &WebView::forward);
}

void MWebView::back_or_forward(int offset) const
{
    call<WebView>("marlune::MWebView::back_or_forward", view_, Delivery::Queued,
                  [offset](WebView& view) { view.back_or_forward(offset); });
}

bool MWebView::can_go_back() const
{
    return call<WebView>("marlune::MWebView::can_go_back", view_, Delivery::Queued, false,
                         &WebView::can_go_back);
}

bool MWebView::can_go_forward() const
{
    return call<WebView>("marlune::MWebView::can_go_forward", view_, Delivery::Queued, false,
                         &WebView::can_go_forward);
}

void MWebView::reload() const
{
    call<WebView>("marlune::MWebView::reload", view_, Delivery::Queued, &WebView::reload);
}

void MWebView::reload_and_bypass_cache() const
{
    call<WebView>("marlune::MWebView::reload_and_bypass_cache", view_, Delivery::Queued,
                  &WebView::reload_and_bypass_cache);
}

void MWebView::run_javascript(const std::string& script) const
{
    call<WebView>(
        "marlune::MWebView::run_javascript", view_, Delivery::Queued,
        [&script](WebView& view) { view.run_javascript(QString::fromStdString(script)); });
}

void MWebView::set_func_navigation_handler(NavigationHandler handler) const
{
    set_callback<WebView>("marlune::MWebView::set_func_navigation_handler", view_, Delivery::Queued,
                          &WebView::navigation_callback, std::move(handler));
}

void MWebView::set_func_loading_changed(LoadingChanged callback) const
{
    set_callback<WebView>("marlune::MWebView::set_func_loading_changed", view_, Delivery::Queued,
                          &WebView::loading_callback, std::move(callback));
}

void MWebView::set_func_page_responding(PageResponding callback) const
{
    set_callback<WebView>("marlune::MWebView::set_func_page_responding", view_, Delivery::Queued,
                          &WebView::responding_callback, std::move(callback));
}

#define MARLUNE_DEFINE_WEB_SETTING(type, name, property, initial, constness)            \
    void MWebView::set_##name(detail::WebSetting##type##Value value) const              \
    {                                                                                   \
        call<WebView>("marlune::MWebView::set_" #name, view_, Delivery::Queued,         \
                      [&value](WebView& view) { view.set_##name(to_qt(value)); });      \
    }                                                                                   \
    detail::WebSetting##type MWebView::get_##name() constness                           \
    {                                                                                   \
        return call<WebView>("marlune::MWebView::get_" #name, view_, Delivery::Queued,  \
                             detail::WebSetting##type(),                                \
                             [](WebView& view) { return to_host(view.get_##name()); }); \
    }
MARLUNE_WEB_SETTINGS(MARLUNE_DEFINE_WEB_SETTING)
#undef MARLUNE_DEFINE_WEB_SETTING

void MWebView::set_background_color(const std::string& color) const
{
    call<WebView>(
        "marlune::MWebView::set_background_color", view_, Delivery::Queued,
        [&color](WebView& view) { view.set_background_color(QString::fromStdString(color)); });
}

std::string MWebView::get_background_color() const
{
    return call<WebView>("marlune::MWebView::get_background_color", view_, Delivery::Queued,
                         std::string(),
                         [](WebView& view) { return view.background_color().toStdString(); });
}

double MWebView::_translate_zoom_factor(int percent)
{
    // The steps of a browser's zoom; whatever is between them is the default.
    constexpr int step = 25, last = 500;
    const bool is_step = percent >= step && percent <= last && percent % step == 0;
    return is_step ? percent / 100.0 : default_zoom;
}

void MWebView::set_zoom_factor(int percent) const
{
    trace("marlune::MWebView::set_zoom_factor", "M");
    if (!view_)
        return;
    const double factor = _translate_zoom_factor(percent);
    if (factor < smallest_zoom || factor > largest_zoom) {
        qWarning("set_zoom_factor factor must be between 25 and 500");
        return;
    }
    call<WebView>("marlune::MWebView::set_zoom_factor", view_, Delivery::Queued,
                  [factor](WebView& view) { view.set_zoom_factor(factor); });
}

double MWebView::get_zoom_factor() const
{
    // Whether there is a zoom, not which: hosts rely on it.
    return call<WebView>("marlune::MWebView::get_zoom_factor", view_, Delivery::Queued, false,
                         [](WebView& view) { return view.zoom_factor() != 0.0; });
}

void MWebView::set_user_agent(const std::string& user_agent) const
{
    call<QQuickWebEngineProfile>("marlune::MWebView::set_user_agent", shared_profile(),
                                 Delivery::Queued, [&user_agent](QQuickWebEngineProfile&) {
                                     marlune::set_user_agent(QString::fromStdString(user_agent));
                                 });
}

std::string MWebView::get_user_agent() const
{
    return call<WebView>("marlune::MWebView::get_user_agent", view_, Delivery::Queued,
                         std::string(),
                         [](WebView& view) { return view.user_agent().toStdString(); });
}

void MWebView::set_otr(bool off_the_record) const
{
    call<QQuickWebEngineProfile>("marlune::MWebView::set_otr", shared_profile(), Delivery::Queued,
                                 [off_the_record](QQuickWebEngineProfile&) {
                                     WebView::change_record(
                                         [=](Record& next) { next.off = off_the_record; });
                                 });
}

void MWebView::set_storage_path(const std::string& path) const
{
    call<QQuickWebEngineProfile>("marlune::MWebView::set_storage_path", shared_profile(),
                                 Delivery::Queued, [&path](QQuickWebEngineProfile&) {
                                     WebView::change_record(
                                         [folder = QString::fromStdString(path)](Record& next) {
                                             next.folder = folder;
                                         });
                                 });
}

void MWebView::set_cookie(std::string domain, std::string path, std::string name, std::string value,
                          bool secure, std::string same_site, int64_t expiry) const
{
    call<QQuickWebEngineProfile>("marlune::MWebView::set_cookie", shared_profile(),
                                 Delivery::Blocking, [&](QQuickWebEngineProfile& profile) {
                                     QNetworkCookie cookie;
                                     cookie.setDomain(QString::fromStdString(domain));
                                     cookie.setName(QByteArray::fromStdString(name));
                                     cookie.setPath(QString::fromStdString(path));
                                     cookie.setSecure(secure);
                                     cookie.setExpirationDate(
                                         QDateTime::fromSecsSinceEpoch(expiry));
                                     cookie.setValue(QByteArray::fromStdString(value));
                                     cookie.setSameSitePolicy(same_site_policy(same_site));
                                     profile.cookieStore()->setCookie(cookie, QUrl());
                                 });
}

void MWebView::set_disable_gpu(bool disabled) const
{
    trace("marlune::MWebView::set_disable_gpu", "M");
    opts::GPU_DISABLED = disabled;
}

bool MWebView::get_disable_gpu() const
{
    trace("marlune::MWebView::get_disable_gpu", "M");
    return opts::GPU_DISABLED;
}

bool MWebView::webchannel_registerObject(const std::string& name,
                                         db::AbstractContextObjectStd* object) const
{
    if (!view_) {
        std::printf("webchannel_registerObject, m_opal == nullptr\n");
        std::fflush(stdout);
        return false;
    }
    call<WebView>("marlune::MWebView::webchannel_registerObject", view_, Delivery::Blocking,
                  [&name, object](WebView& view) { view.register_object(name, object); });
    return true;
}

bool MWebView::webchannel_deregisterObject(const std::string& name) const
{
    call<WebView>("marlune::MWebView::webchannel_deregisterObject", view_, Delivery::Blocking,
                  [&name](WebView& view) { view.deregister_object(name); });
    return view_ != nullptr;
}

db::AbstractContextObjectStd* MWebView::webchannel_getObject(const std::string& name) const
{
    db::AbstractContextObjectStd* found = nullptr;
    visit<WebView>("marlune::MWebView::webchannel_getObject", view_,
                   [&](WebView& view) { found = view.find_object(name); });
    return found;
}

}  // namespace marlune
