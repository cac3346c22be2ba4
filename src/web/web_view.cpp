#include "web/web_view.h"

#include "binding/manager.h"
#include "runtime/host_callback.h"
#include "runtime/platform.h"
#include "runtime/trace.h"
#include "views/component_files.h"
#include "web/engine_version.h"
#include "web/profile.h"
#include "web/published_objects.h"

#include <QFile>
#include <QPointer>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWebEngineProfile>
#include <QUrl>
#include <QWebChannel>

#include <algorithm>
#include <stdexcept>
#include <unordered_set>
#include <utility>
#include <vector>

namespace marlune {

namespace {

constexpr auto default_user_agent =
    "Mozilla/5.0 (X11; U; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) Ubuntu "
    "Chromium/124.0.6310.208 Chrome/122.0.6310.208 Safari/537.36";

/** The engine's number for a load that has started. */
constexpr int loading_started = 0;

// All existing web views. Only on the Qt thread.
std::unordered_set<WebView*> web_views;
bool software_rendering_found = false;

int next_idx()
{
    static int made = 0;
    return made++;
}

QStringList setting_names()
{
    QStringList names;
#define MARLUNE_WEB_SETTING_NAME(type, name, property, initial, constness) \
    names += QStringLiteral(#property);
    MARLUNE_WEB_SETTINGS(MARLUNE_WEB_SETTING_NAME)
#undef MARLUNE_WEB_SETTING_NAME
    return names;
}

/**
 * Whether the engine is known to use software rendering: because of the flags, or because an
 * earlier view has found out.
 */
bool engine_renders_in_software()
{
    static const bool wanted = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").contains("--disable-gpu");
    return wanted || software_rendering_found
        || std::ranges::any_of(web_views, &WebView::uses_software_rendering);
}

std::vector<QPointer<QObject>> engine_views_of(const QObject& root)
{
    std::vector<QPointer<QObject>> result;
    for (QObject* const object : root.findChildren<QObject*>()) {
        if (object->inherits("QQuickWebEngineView"))
            result.emplace_back(object);
    }
    return result;
}

void check_page_script()
{
    QFile script(QStringLiteral(":/Web/assets/test.min.js"));
    if (!script.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qWarning("could not load webchannel js file");
        return;
    }
    static_cast<void>(script.readAll());
}

}  // namespace

WebView::WebView()
    : View("WebView"), idx_(next_idx()), user_agent_(QLatin1StringView(default_user_agent))
{
    web_views.insert(this);
    connect(&watch_, &PageWatch::hangingChanged, this,
            [this](bool hanging) { responding_.call(this, !hanging); });
}

WebView::~WebView()
{
    // While this is still a WebView: script that ends with the scene may call it.
    withdraw();
    web_views.erase(this);
    reset();
    if (!manager_)
        return;
    // Scenes of other views may use the objects.
    PublishedObjects::remove(*manager_);
    manager_->deregister_all();
    delete manager_;
}

void WebView::prepare_context(QQmlContext* root_context)
{
    root_context->setContextProperty(QStringLiteral("ctx"), this);
    root_context->setContextProperty(QStringLiteral("customWebProfile"), profile_);
    root_context->setContextProperty(QStringLiteral("pageWatch"), &watch_);
    root_context->setContextProperty(QStringLiteral("webSettings"), setting_names());
    root_context->setContextProperty(QStringLiteral("webEngineIsNew"), engine_is_new);
    root_context->setContextProperty(QStringLiteral("webDeviceFits"),
                                     engine_renders_in_software() || device_imports_memory());
    root_context->setContextProperty(QStringLiteral("webMemoryExtension"),
                                     QString::fromLatin1(platform::external_memory.extension));
    publish_module(QStringLiteral("Web"));
}

void WebView::before_reset()
{
    software_rendering_found |= uses_software_rendering();
    watch_.set_active(false);
}

void WebView::post_setup(QQmlEngine*, QObject* root)
{
    publish_on(root);
    db::DataBindingContextManager::register_types();
    publish_pending();
    // The engine draws a page's next frame after the last one has been consumed. If that waited for
    // the host's next frame, each frame of the page would be displayed one or two frames late.
    sync_on_scene_change();
}

void WebView::publish_on(QObject* root)
{
    auto* const channel = root->property("webChannel").value<QWebChannel*>();
    page_gate_.lead(root->property("gate").value<QWebChannel*>(), channel, objectName());
    // Without the channel's timer: changes are reported immediately.
    channel->setPropertyUpdateInterval(-1);
    if (manager_) {
        manager_->move_to(channel, root);
    } else {
        {
            const std::lock_guard lock(manager_mutex_);
            manager_ = new db::DataBindingContextManager(channel, root);
        }
        PublishedObjects::add(idx_, *manager_);
    }
    channel->registerObject(QStringLiteral("___cm"), manager_);
}

void WebView::publish_pending()
{
    for (const auto& [name, object] : std::exchange(pending_, {}))
        manager_->registerObject(name, object);
}

bool WebView::uses_software_rendering() const
{
    return root_item() && root_item()->property("usesSoftwareRendering").toBool();
}

bool WebView::has_pages()
{
    return std::ranges::any_of(web_views, [](const WebView* view) {
        return view->root_item() && !engine_views_of(*view->root_item()).empty();
    });
}

void WebView::close_pages()
{
    // The scenes remain: the host may have released its device already.
    for (WebView* const view : web_views)
        view->close_page();
}

void WebView::change_record(const std::function<void(Record&)>& change)
{
    Record next = record();
    change(next);
    if (!record_ends_pages(next))
        return set_record(next);
    // The scenes create their pages again with their next frames.
    HostCallbackScope::run_outside([change] {
        Record latest = record();
        change(latest);
        close_pages();
        set_record(latest);
        for (WebView* const view : web_views)
            view->take_profile();
    });
}

void WebView::take_profile()
{
    profile_ = profile_ ? shared_profile() : nullptr;
    if (const QQmlEngine* const engine = root_item() ? qmlEngine(root_item()) : nullptr)
        engine->rootContext()->setContextProperty(QStringLiteral("customWebProfile"), profile_);
}

/** Also closes a page that is still being created, or that the scene uses internally. */
void WebView::close_page()
{
    if (!root_item())
        return;
    const std::vector<QPointer<QObject>> pages = engine_views_of(*root_item());
    call_root("close_page");
    // The scene has released them; without this, they would exist until the next turn of the
    // event loop.
    for (QObject* const page : pages)
        delete page;
}

bool WebView::load()
{
    trace("WebView::load()", "T");
    profile_ = profile_for_pages();
    if (!profile_)
        throw std::runtime_error("Failed to set web profile");
    return load_module(QStringLiteral("Web"), QStringLiteral("Webview"));
}

/**
 * Runs work that navigates the page. The engine of Qt 6.11 terminates the program if a navigation
 * starts while it handles another one, which a callback may be part of.
 */
template <typename Work>
void WebView::order(Work work)
{
    if constexpr (engine_is_new)
        run_outside_callbacks(*this, std::move(work));
    else
        work(*this);
}

void WebView::set_url(const QString& url)
{
    if (QUrl(url).isRelative()) {
        qWarning("%s: \"%s\" is not an absolute URL and cannot be loaded; include the scheme, for "
                 "example \"https://\"",
                 qUtf8Printable(objectName()), qUtf8Printable(url));
    }
    url_ = url;
    order([url](WebView& view) { emit view.urlChanged(url); });
}

void WebView::set_zoom_factor(double factor)
{
    zoom_factor_ = factor;
    emit zoomFactorChanged(factor);
}

void WebView::set_background_color(const QString& color)
{
    background_color_ = color;
    emit backgroundColorChanged(color);
}

/** Returns false if there is no scene, or if its root has no such function. */
template <typename... Arguments>
bool WebView::call_root(const char* function, Arguments&&... arguments)
{
    return root_item()
        && QMetaObject::invokeMethod(root_item(), function, Qt::DirectConnection,
                                     std::forward<Arguments>(arguments)...);
}

void WebView::load_html(const QString& html, const QString& base_url)
{
    order([html, base_url](WebView& view) {
        view.call_root("load_html", Q_ARG(QVariant, html), Q_ARG(QVariant, base_url));
    });
    check_page_script();
}

void WebView::back()
{
    order([](WebView& view) { view.call_root("back"); });
}

void WebView::forward()
{
    order([](WebView& view) { view.call_root("forward"); });
}

void WebView::back_or_forward(int offset)
{
    order([offset](WebView& view) { view.call_root("back_or_forward", Q_ARG(int, offset)); });
}

bool WebView::can_go_back()
{
    QVariant answer;
    call_root("can_go_back", Q_RETURN_ARG(QVariant, answer));
    return answer.toBool();
}

bool WebView::can_go_forward()
{
    QVariant answer;
    call_root("can_go_forward", Q_RETURN_ARG(QVariant, answer));
    return answer.toBool();
}

void WebView::reload()
{
    order([](WebView& view) { view.call_root("reload"); });
}

void WebView::reload_and_bypass_cache()
{
    order([](WebView& view) { view.call_root("reload_and_bypass_cache"); });
}

void WebView::run_javascript(const QString& script)
{
    call_root("run_javascript", Q_ARG(QVariant, script));
}

bool WebView::register_object(const std::string& name, db::AbstractContextObjectStd* object)
{
    if (manager_)
        return manager_->registerObject(name, object);
    return pending_.emplace(name, object).second;
}

bool WebView::deregister_object(const std::string& name)
{
    if (manager_)
        return manager_->deregisterObject(name);
    qWarning("data-binding manager not initialized");
    return false;
}

db::AbstractContextObjectStd* WebView::find_object(const std::string& name) const
{
    const std::lock_guard lock(manager_mutex_);
    return manager_ ? manager_->find(name) : nullptr;
}

bool WebView::navigation_handler(QString url, QString navigationType)
{
    if (navigation_handler_.is_empty())
        return true;
    return navigation_handler_.call(this, url.toStdString(), navigationType.toStdString());
}

void WebView::onLoadingChanged(int status, QString url, QString errorDomain, QString errorString,
                               int errorCode)
{
    if (status == loading_started)
        page_gate_.expect_page();
    loading_changed_.call(this, status, url.toStdString(), errorDomain.toStdString(),
                          errorString.toStdString(), errorCode);
}

}  // namespace marlune
