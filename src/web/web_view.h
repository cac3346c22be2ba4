#pragma once

#include "views/view.h"
#include "web/page_gate.h"
#include "web/page_watch.h"
#include "web/profile.h"
#include "web/web_setting_members.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace marlune {

namespace db {
class DataBindingContextManager;
struct AbstractContextObjectStd;
}  // namespace db

/**
 * The view that shows a web page. Its scene, the component "Webview", binds to its properties and
 * calls its functions.
 */
class WebView : public View {
    Q_OBJECT
    Q_PROPERTY(int idx READ idx WRITE set_idx)
    Q_PROPERTY(QString url READ url WRITE set_url NOTIFY urlChanged)
    Q_PROPERTY(bool audio_muted READ audio_muted NOTIFY audioMutedChanged)
    Q_PROPERTY(double zoom_factor READ zoom_factor WRITE set_zoom_factor NOTIFY zoomFactorChanged)
    Q_PROPERTY(QString backgroundColor READ background_color WRITE set_background_color NOTIFY
                   backgroundColorChanged)
    MARLUNE_WEB_SETTINGS(MARLUNE_WEB_SETTING_PROPERTY)

public:
    using NavigationHandler = CallbackSlot<bool(std::string, std::string)>;
    using LoadingChanged = CallbackSlot<void(int, std::string, std::string, std::string, int)>;
    using PageResponding = CallbackSlot<void(bool)>;

    WebView();
    ~WebView() override;

    void prepare_context(QQmlContext* root_context) override;
    void post_setup(QQmlEngine* engine, QObject* root) override;
    void before_reset() override;

    /** Whether any view has a page. */
    static bool has_pages();

    /** Closes the pages of all views and keeps their scenes. Called when the library stops. */
    static void close_pages();
    /**
     * Changes the record of the profile, after the running callback has returned. Pages that the
     * change would end are loaded again.
     */
    static void change_record(const std::function<void(Record&)>& change);

    /**
     * @throws std::runtime_error without a profile, and like load_module().
     */
    bool load();

    /** Whether this view's scene has found out that the engine uses software rendering. */
    bool uses_software_rendering() const;

    int idx() const { return idx_; }
    void set_idx(int idx) { idx_ = idx; }
    QString url() const { return url_; }
    void set_url(const QString& url);
    bool audio_muted() const { return audio_muted_; }
    double zoom_factor() const { return zoom_factor_; }
    void set_zoom_factor(double factor);
    QString background_color() const { return background_color_; }
    void set_background_color(const QString& color);
    QString user_agent() const { return user_agent_; }

    MARLUNE_WEB_SETTINGS(MARLUNE_WEB_SETTING_ACCESSORS)

    void load_html(const QString& html, const QString& base_url);
    void back();
    void forward();
    void back_or_forward(int offset);
    bool can_go_back();
    bool can_go_forward();
    void reload();
    void reload_and_bypass_cache();
    void run_javascript(const QString& script);

    NavigationHandler& navigation_callback() { return navigation_handler_; }
    LoadingChanged& loading_callback() { return loading_changed_; }

    PageResponding& responding_callback() { return responding_; }

    bool register_object(const std::string& name, db::AbstractContextObjectStd* object);
    bool deregister_object(const std::string& name);
    /** Callable on any thread. */
    db::AbstractContextObjectStd* find_object(const std::string& name) const;

    /** The scene calls it before each navigation. */
    Q_INVOKABLE bool navigation_handler(QString url, QString navigationType);
    Q_INVOKABLE void onLoadingChanged(int status, QString url, QString errorDomain,
                                      QString errorString, int errorCode);

signals:
    void audioMutedChanged(bool status);
    void urlChanged(QString url);
    void backgroundColorChanged(QString color);
    void userAgentChanged(QString user_agent);
    void zoomFactorChanged(double factor);
    MARLUNE_WEB_SETTINGS(MARLUNE_WEB_SETTING_SIGNAL)

private:
    template <typename Work>
    void order(Work work);
    void close_page();
    void take_profile();
    void publish_on(QObject* root);
    void publish_pending();
    template <typename... Arguments>
    bool call_root(const char* function, Arguments&&... arguments);

    // Objects that the host has registered before there was a channel.
    std::map<std::string, db::AbstractContextObjectStd*> pending_;
    // Other threads look up objects, so the pointer has its own lock.
    mutable std::mutex manager_mutex_;
    // On the channel, so not only this view could delete it.
    QPointer<db::DataBindingContextManager> manager_;
    PageGate page_gate_;
    NavigationHandler navigation_handler_;
    LoadingChanged loading_changed_;
    PageResponding responding_;
    PageWatch watch_{this};
    QQuickWebEngineProfile* profile_ = nullptr;
    int idx_;
    QString url_ = QStringLiteral("about:blank");
    bool audio_muted_ = false;
    QString user_agent_;
    double zoom_factor_ = 2.0;
    QString background_color_ = QStringLiteral("transparent");
    MARLUNE_WEB_SETTINGS(MARLUNE_WEB_SETTING_FIELD)
};

}  // namespace marlune
