#pragma once

#include "runtime/callback_slot.h"
#include "runtime/live_objects.h"
#include "views/frame_pacer.h"
#include "views/host_device.h"
#include "views/host_texture.h"
#include "views/input_state.h"

#include <QObject>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <memory>
#include <string>

class QQmlComponent;
class QQmlContext;
class QQmlEngine;
class QQuickItem;
class QQuickRenderControl;
class QQuickWindow;

namespace marlune {

/**
 * The render core of every view: a Qt Quick scene, its offscreen window, and the texture on the
 * host's device that it is drawn to. All members are called on the Qt thread.
 *
 * A new view has no scene; load_module() sets one up, and reset() destroys it and keeps the
 * texture. The remains of a failed set-up are destroyed by the next reset() or load.
 */
class View : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString gpuName READ gpu_name NOTIFY gpuNameChanged)
    Q_PROPERTY(QSizeF resolution READ get_resolution NOTIFY resolutionChanged)
    Q_PROPERTY(qulonglong framesRendered READ frames_rendered NOTIFY frameRendered)

public:
    using JavaScriptConsoleLog = CallbackSlot<void(int, std::string, int, std::string)>;

    /** `kind` is the start of the view's name in messages, as in "QuickView 3". */
    explicit View(const char* kind);
    ~View() override;

    /** Called in scene set-up, after the engine is made and before a component is loaded. */
    virtual void prepare_context(QQmlContext* root_context);
    /** Called at the end of scene set-up. */
    virtual void post_setup(QQmlEngine* engine, QObject* root);
    /** Called first by reset(). */
    virtual void before_reset();

    /** @throws std::runtime_error when the instance cannot be used. */
    void set_view_monitor(VkInstance instance);
    void set_statistics_monitor(VkPhysicalDevice physical_device, VkDevice device);
    void set_resolution(QSizeF resolution);
    QSizeF get_resolution() const { return resolution_; }
    void set_refresh_rate(int rate) { pacer_.set_rate(rate); }
    int get_refresh_rate() const { return pacer_.rate(); }
    void set_mipmaps_enabled(bool enabled) { mipmaps_enabled_ = enabled; }
    int get_mips_count() const;
    quint64 get_texture() const { return texture_.native(); }

    /** Draws a frame if the interval has passed. */
    void render();
    void reset();

    void mouse_click(quint16 button, quint16 action, QPointF position);
    void mouse_move(QPointF position);
    /** `notches` is positive away from the user. */
    void mouse_wheel(QPointF position, int notches);
    void key_event(int key, quint16 action, QString text);

    JavaScriptConsoleLog& javascript_console_log() { return console_log_; }

    QString version() const;
    /** Empty before the scene's device is made. */
    QString gpu_name() const;
    quint64 frames_rendered() const { return frames_rendered_; }

    /** For scenes that show text of pages or files; see short_text.h. */
    Q_INVOKABLE QString shortened(const QString& text, int units = 2'000, int lines = 40) const;

public slots:
    void onJavaScriptConsoleMessage(int level, QString message, int line_number, QString source_id);

signals:
    void gpuNameChanged();
    void resolutionChanged();
    void frameRendered();

protected:
    /** Replaces the scene by the component's. Returns false or throws on failure. */
    bool load_module(const QString& module, const QString& name);

    /** Refuses further calls of other threads; the first step of a subclass's destructor. */
    void withdraw() { live_.withdraw(); }

    /**
     * Has the loaded scene's changes synchronized into its scene graph as they come, and not only
     * with the next frame, for as long as the host draws frames. For items whose producer waits
     * until its last image has been taken.
     */
    void sync_on_scene_change();

    /** True when the host's device can import images of another device. */
    bool device_imports_memory() { return device_.imports_memory(); }

    /** The scene's root; null without a scene. */
    QQuickItem* root_item() const { return root_item_; }

private:
    bool has_usable_resolution() const;
    bool set_up_scene(const QString& module, const QString& name);
    void create_window();
    void create_engine();
    bool create_component(const QString& module, const QString& name);
    void create_root_item();
    void size_scene();
    void require_drawable(QSizeF size);
    void initialize_graphics();
    void create_render_target();
    bool warm_up();
    bool gpu_has_finished();
    void report_missing_frame();
    void sync_changes();

    // In the order in which the scene needs them; reset() destroys the scene in another one.
    HostDevice device_;
    HostTexture texture_;
    std::unique_ptr<QQuickRenderControl> render_control_;
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<QQmlComponent> component_;
    QQuickItem* root_item_ = nullptr;

    FramePacer pacer_;
    InputState input_;
    QSizeF resolution_{1920, 1080};
    bool mipmaps_enabled_ = false;
    bool rendering_ = false;
    bool frame_is_missing_ = false;
    quint64 frames_rendered_ = 0;
    JavaScriptConsoleLog console_log_;
    LiveObject live_{this};
};

}  // namespace marlune
