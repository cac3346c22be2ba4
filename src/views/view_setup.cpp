// The set-up of a view's scene: the steps of View::load_module in their order.

#include "views/view.h"

#include "runtime/addon_dir.h"
#include "runtime/exit_handlers.h"
#include "runtime/host_callback.h"
#include "runtime/trace.h"
#include "views/component_files.h"
#include "views/pipeline_file.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFocusEvent>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickGraphicsConfiguration>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>
#include <rhi/qrhi.h>

#include <memory>
#include <stdexcept>

namespace marlune {

namespace {

constexpr qreal narrowest_root = 16;
constexpr int warm_up_passes = 16;

void warn_of_errors(const QString& view, const QQmlComponent& component)
{
    for (const QQmlError& error : component.errors())
        qWarning("%s: line %d: %s", qUtf8Printable(view), error.line(),
                 qUtf8Printable(error.description()));
}

}  // namespace

bool View::load_module(const QString& module, const QString& name)
{
    trace("QuickView::load_module()", "T");
    if (HostCallbackScope::active()) {
        qWarning("%s: a callback cannot load a scene; load it after the callback has returned",
                 qUtf8Printable(objectName()));
        return false;
    }
    if (!has_usable_resolution())
        return false;

    if (render_control_)
        reset();
    if (!set_up_scene(module, name))
        return false;
    if (!warm_up()) {
        qWarning("%s: the first frame could not be drawn", qUtf8Printable(objectName()));
        reset();
        texture_.release();
        return false;
    }
    trace("load_module done", "T");
    post_setup(engine_.get(), root_item_);
    register_exit_handlers();
    return true;
}

bool View::set_up_scene(const QString& module, const QString& name)
{
    create_window();
    create_engine();
    if (!create_component(module, name))
        return false;
    create_root_item();
    size_scene();
    connect(root_item_, SIGNAL(javaScriptConsoleMessage(int, QString, int, QString)), this,
            SLOT(onJavaScriptConsoleMessage(int, QString, int, QString)));
    initialize_graphics();
    create_render_target();
    return true;
}

void View::create_window()
{
    render_control_ = std::make_unique<QQuickRenderControl>();
    window_ = std::make_unique<QQuickWindow>(render_control_.get());
    window_->setColor(Qt::transparent);
    QQuickGraphicsConfiguration configuration;
    configuration.setTimestamps(true);
    // Has Qt collect the pipelines; HostTexture loads and saves them.
    configuration.setAutomaticPipelineCache(false);
    configuration.setPipelineCacheSaveFile(pipeline_file());
    window_->setGraphicsConfiguration(configuration);
    window_->setGraphicsDevice(device_.quick_device());
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Vulkan);
    window_->setVulkanInstance(&device_.instance());
}

void View::create_engine()
{
    engine_ = std::make_unique<QQmlEngine>();
    engine_->setParent(window_.get());
    QQmlContext* const context = engine_->rootContext();
    prepare_context(context);
    context->setContextProperty(QStringLiteral("view"), this);
    context->setContextProperty(QStringLiteral("PATH_ADDON"), QString::fromLocal8Bit(addon_dir()));
}

bool View::create_component(const QString& module, const QString& name)
{
    component_ = std::make_unique<QQmlComponent>(engine_.get());
    if (!publish_component(module, name)) {
        qWarning("Failed to load");
        return false;
    }
    component_->loadFromModule(module, name);
    if (!component_->isError())
        return true;
    warn_of_errors(objectName(), *component_);
    qWarning("Failed to load");
    return false;
}

void View::create_root_item()
{
    std::unique_ptr<QObject> root(component_->create(engine_->rootContext()));
    if (component_->isError()) {
        warn_of_errors(objectName(), *component_);
        throw std::runtime_error("Failed to create component");
    }
    root_item_ = qobject_cast<QQuickItem*>(root.get());
    if (!root_item_) {
        throw std::runtime_error(
            "Root object is not a QQuickItem. If this is a scene with Window in "
            "it, note that such scenes are not supported.");
    }
    static_cast<void>(root.release());
}

void View::size_scene()
{
    if (root_item_->width() < narrowest_root) {
        // Before the scene creates content for a size that cannot be drawn.
        require_drawable(resolution_);
        root_item_->setSize(resolution_);
    }
    require_drawable(root_item_->size());
    window_->contentItem()->setSize(root_item_->size());
    window_->setGeometry(0, 0, static_cast<int>(root_item_->width()),
                         static_cast<int>(root_item_->height()));
    root_item_->setParentItem(window_->contentItem());

    // Keys reach only a window with the focus, and no window system ever gives it to this one.
    QFocusEvent focus(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window_.get(), &focus);
}

/** Throws unless a texture can have this size. In fractions of px, which cannot overflow. */
void View::require_drawable(QSizeF size)
{
    const int largest = device_.largest_side();
    // False for NaN too.
    const auto fits = [largest](qreal side) { return side >= 0.5 && side < largest + 0.5; };
    if (fits(size.width()) && fits(size.height()))
        return;
    qWarning("%s: a scene of %.0f x %.0f px cannot be drawn; each side must be from 1 to %d px",
             qUtf8Printable(objectName()), size.width(), size.height(), largest);
    throw std::runtime_error("Cannot create texture object");
}

void View::initialize_graphics()
{
    // Given none, Qt would create a device of its own, whose textures the host cannot use.
    if (!device_.is_complete()) {
        qWarning(
            "%s: no Vulkan device; call set_view_monitor and set_statistics_monitor before loading",
            qUtf8Printable(objectName()));
        throw std::runtime_error("QQuickRenderControl::initialize() failed");
    }
    device_.look_up_functions();
    if (!render_control_->initialize())
        throw std::runtime_error("QQuickRenderControl::initialize() failed");
    texture_.attach(*render_control_, window_->graphicsConfiguration().pipelineCacheSaveFile());
    emit gpuNameChanged();
}

void View::create_render_target()
{
    require_drawable(root_item_->size());
    texture_.create(root_item_->size().toSize());
    window_->setRenderTarget(texture_.target());
}

/** False when no frame has been drawn, so that the texture's content is undefined. */
bool View::warm_up()
{
    // A new scene does not wait for the interval after the old scene's last frame.
    pacer_.make_due();
    // Bounded: where frames take longer than the interval, one would be due in each pass.
    for (int pass = 0; pass < warm_up_passes && !texture_.is_drawn(); ++pass)
        render();
    return texture_.is_drawn() && gpu_has_finished();
}

/** Qt waits for each frame, but does not check the result of the wait. */
bool View::gpu_has_finished()
{
    const auto* const handles =
        static_cast<const QRhiVulkanNativeHandles*>(texture_.rhi()->nativeHandles());
    return device_.wait_for(handles->gfxQueue);
}

}  // namespace marlune
