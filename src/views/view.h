#pragma once

#include "runtime/callback_slot.h"
#include "runtime/live_objects.h"
#include "views/private_graphics.h"

#include <QObject>
#include <QPointF>
#include <QQuickGraphicsDevice>
#include <QSizeF>
#include <QString>
#include <QVulkanInstance>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

class QEvent;
class QQmlComponent;
class QQmlContext;
class QQmlEngine;
class QQuickItem;
class QQuickRenderControl;
class QQuickWindow;
class QRhi;
class QRhiRenderBuffer;
class QRhiRenderPassDescriptor;
class QRhiTexture;
class QRhiTextureRenderTarget;

namespace marlune {

/**
 * The render core of every view: a Qt Quick scene, its offscreen window, and the texture on the host's
 * device that it is drawn to. Lives on the Qt thread, and everything here runs there.
 *
 * Empty when made; set up by load_module(), which a subclass offers to the host; empty again, but for
 * the texture, after reset(). A set-up that has failed leaves what it had made until the next reset()
 * or load.
 */
class View : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString gpuName READ gpu_name NOTIFY gpuNameChanged)
    Q_PROPERTY(QSizeF resolution READ get_resolution NOTIFY resolutionChanged)
    Q_PROPERTY(qulonglong framesRendered READ frames_rendered NOTIFY frameRendered)

public:
    using JavaScriptConsoleLog = CallbackSlot<void(int, std::string, int, std::string)>;

    /** `kind` is the start of the name by which messages call the view, as in "QuickView 3". */
    explicit View(const char* kind);
    ~View() override;

    /** Called in scene set-up, when the engine stands and no component is loaded yet. */
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
    void set_refresh_rate(int rate);
    int get_refresh_rate() const;
    void set_mipmaps_enabled(bool enabled) { mipmaps_enabled_ = enabled; }
    int get_mips_count() const;
    quint64 get_texture() const { return native_texture_; }

    /** One frame if the interval has passed, else nothing. */
    void render();
    void reset();

    void mouse_click(quint16 button, quint16 action, QPointF position);
    void mouse_move(QPointF position);
    /** `notches` is positive away from the user. */
    void mouse_wheel(QPointF position, int notches);
    void key_event(int key, quint16 action, QString text);

    JavaScriptConsoleLog& javascript_console_log() { return console_log_; }

    QString version() const;
    /** Empty until the scene's device stands. */
    QString gpu_name() const;
    quint64 frames_rendered() const { return frames_rendered_; }

    /** For scenes: what to show of a text from outside. See short_text.h. */
    Q_INVOKABLE QString shortened(const QString& text, int units = 2'000, int lines = 40) const;

public slots:
    void onJavaScriptConsoleMessage(int level, QString message, int line_number, QString source_id);

signals:
    void gpuNameChanged();
    void resolutionChanged();
    void frameRendered();

protected:
    /** Tears down what was there before and sets the component's scene up. False or throws on failure. */
    bool load_module(const QString& module, const QString& name);

    /** Ends what other threads may ask of this view; first of all in the destructor of a subclass. */
    void withdraw() { live_.withdraw(); }

    /**
     * From now on, as long as the host draws frames, changes of the loaded scene's items are taken into
     * its scene graph when they come, and not only with the next frame. For items whose feeder waits
     * until what it has given last has been taken.
     */
    void take_changes_at_once();

    /** Whether the host's device can take pictures that another device has made. */
    bool device_shares_memory();

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
    int largest_side() const;
    void require_drawable(QSizeF size) const;
    void look_up_device_functions();
    void initialize_graphics();
    void create_render_target();
    void release_texture();
    bool warm_up();
    bool gpu_has_finished();
    bool draw_frame();
    void report_missing_frame();
    void take_changes();
    void send(QEvent& event);
    QPointF to_global(QPointF position) const;

    // In the order in which the scene needs them; reset() and release_texture() say how they go.
    QQuickGraphicsDevice graphics_device_;
    VkPhysicalDevice physical_device_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    QQuickItem* root_item_ = nullptr;
    private_graphics::OwnRhi rhi_;  // of the scene; after reset(), of the texture that is left
    std::unique_ptr<QQuickRenderControl> render_control_;
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<QQmlComponent> component_;
    std::unique_ptr<QRhiTexture> texture_;
    std::unique_ptr<QRhiRenderBuffer> depth_stencil_;
    std::unique_ptr<QRhiTextureRenderTarget> render_target_;
    std::unique_ptr<QRhiRenderPassDescriptor> render_pass_;

    Qt::MouseButtons pressed_buttons_;
    QPointF last_mouse_position_;
    bool ready_ = false;
    bool rendering_ = false;
    bool texture_drawn_ = false;
    bool frame_is_missing_ = false;
    quint64 native_texture_ = 0;
    QSizeF resolution_{1920, 1080};
    bool mipmaps_enabled_ = false;
    Qt::KeyboardModifiers modifiers_;
    quint64 frames_rendered_ = 0;
    std::chrono::milliseconds frame_interval_{16};
    // One interval back, so that the first frame is due at once.
    std::chrono::steady_clock::time_point last_frame_ =
        std::chrono::steady_clock::now() - frame_interval_;
    QVulkanInstance vulkan_instance_;
    JavaScriptConsoleLog console_log_;
    LiveObject live_{this};
};

}  // namespace marlune
