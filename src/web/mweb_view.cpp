#include "marlune/mweb_view.h"

#include "runtime/facade_call.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"
#include "web/profile.h"
#include "web/web_view.h"

#include "marlune/options.h"

#include <QQuickWebEngineProfile>

#include <cstdio>
#include <utility>

namespace marlune {

namespace {

constexpr double default_zoom = 2.0;
constexpr double smallest_zoom = 0.25;
constexpr double largest_zoom = 5.0;

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
    return ask(view_, false, &WebView::load);
}

void MWebView::set_url(std::string url) const
{
    tell(view_, &WebView::set_url, std::move(url));
}

std::string MWebView::get_url() const
{
    return ask(view_, std::string(), &WebView::url);
}

void MWebView::load_html(std::string html, std::string base_url) const
{
    tell(view_, &WebView::load_html, std::move(html), std::move(base_url));
}

void MWebView::back() const
{
    tell(view_, &WebView::back);
}

void MWebView::forward() const
{
    tell(view_, &WebView::forward);
}

void MWebView::back_or_forward(int offset) const
{
    tell(view_, &WebView::back_or_forward, offset);
}

bool MWebView::can_go_back() const
{
    return ask(view_, false, &WebView::can_go_back);
}

bool MWebView::can_go_forward() const
{
    return ask(view_, false, &WebView::can_go_forward);
}

void MWebView::reload() const
{
    tell(view_, &WebView::reload);
}

void MWebView::reload_and_bypass_cache() const
{
    tell(view_, &WebView::reload_and_bypass_cache);
}

void MWebView::run_javascript(const std::string& script) const
{
    tell(view_, &WebView::run_javascript, script);
}

void MWebView::set_func_navigation_handler(NavigationHandler handler) const
{
    set_callback(view_, WaitFor::Result, &WebView::navigation_callback, std::move(handler));
}

void MWebView::set_func_loading_changed(LoadingChanged callback) const
{
    set_callback(view_, WaitFor::Result, &WebView::loading_callback, std::move(callback));
}

void MWebView::set_func_page_responding(PageResponding callback) const
{
    set_callback(view_, WaitFor::Result, &WebView::responding_callback, std::move(callback));
}

#define MARLUNE_DEFINE_WEB_SETTING(type, name, property, initial, constness) \
    void MWebView::set_##name(detail::WebSetting##type##Value value) const   \
    {                                                                        \
        tell(view_, &WebView::set_##name, value);                            \
    }                                                                        \
    detail::WebSetting##type MWebView::get_##name() constness                \
    {                                                                        \
        return ask(view_, detail::WebSetting##type(), &WebView::get_##name); \
    }
MARLUNE_WEB_SETTINGS(MARLUNE_DEFINE_WEB_SETTING)
#undef MARLUNE_DEFINE_WEB_SETTING

void MWebView::set_background_color(const std::string& color) const
{
    tell(view_, &WebView::set_background_color, color);
}

std::string MWebView::get_background_color() const
{
    return ask(view_, std::string(), &WebView::background_color);
}

double MWebView::_translate_zoom_factor(int percent)
{
    // The zoom steps of browsers; any other value means the default.
    constexpr int step = 25, last = 500;
    const bool is_step = percent >= step && percent <= last && percent % step == 0;
    return is_step ? percent / 100.0 : default_zoom;
}

void MWebView::set_zoom_factor(int percent) const
{
    const double factor = _translate_zoom_factor(percent);
    if (view_ && (factor < smallest_zoom || factor > largest_zoom)) {
        qWarning("set_zoom_factor factor must be between 25 and 500");
        return;
    }
    tell(view_, &WebView::set_zoom_factor, factor);
}

double MWebView::get_zoom_factor() const
{
    // Returns whether there is a zoom, not which: the interface requires it.
    return ask(view_, false, [](WebView& view) { return view.zoom_factor() != 0.0; });
}

void MWebView::set_user_agent(const std::string& user_agent) const
{
    tell(shared_profile(), [&](QQuickWebEngineProfile&) {
        marlune::set_user_agent(QString::fromStdString(user_agent));
    });
}

std::string MWebView::get_user_agent() const
{
    return ask(view_, std::string(), &WebView::user_agent);
}

void MWebView::set_otr(bool off_the_record) const
{
    tell(shared_profile(), [=](QQuickWebEngineProfile&) {
        WebView::change_record([=](Record& next) { next.off = off_the_record; });
    });
}

void MWebView::set_storage_path(const std::string& path) const
{
    tell(shared_profile(), [folder = QString::fromStdString(path)](QQuickWebEngineProfile&) {
        WebView::change_record([folder](Record& next) { next.folder = folder; });
    });
}

void MWebView::set_cookie(std::string domain, std::string path, std::string name, std::string value,
                          bool secure, std::string same_site, int64_t expiry) const
{
    complete(shared_profile(), marlune::set_cookie, std::move(domain), std::move(path),
             std::move(name), std::move(value), secure, std::move(same_site), expiry);
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
    complete(view_, &WebView::register_object, name, object);
    return true;
}

bool MWebView::webchannel_deregisterObject(const std::string& name) const
{
    complete(view_, &WebView::deregister_object, name);
    return view_ != nullptr;
}

db::AbstractContextObjectStd* MWebView::webchannel_getObject(const std::string& name) const
{
    db::AbstractContextObjectStd* found = nullptr;
    with_live_object(view_, [&](WebView& view) { found = view.find_object(name); });
    return found;
}

}  // namespace marlune
