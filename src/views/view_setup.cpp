// The set-up of a view's scene: the steps of View::load_module in their order.

#include "views/view.h"

#include "runtime/host_callback.h"
#include "runtime/platform.h"
#include "runtime/startup.h"
#include "runtime/trace.h"
#include "views/component_files.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFocusEvent>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickGraphicsConfiguration>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickRenderTarget>
#include <QQuickWindow>
#include <QVulkanFunctions>
#include <rhi/qrhi.h>

#include <chrono>
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
        qWarning("%s: a callback cannot load a scene; load it once the callback has returned",
                 qUtf8Printable(objectName()));
        return false;
    }
    if (!has_usable_resolution())
        return false;

    if (render_control_)
        reset();
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
    warm_up();
    trace("load_module done", "T");
    post_setup(engine_.get(), root_item_);
    ready_ = true;
    return true;
}

void View::create_window()
{
    render_control_ = std::make_unique<QQuickRenderControl>();
    window_ = std::make_unique<QQuickWindow>(render_control_.get());
    window_->setColor(Qt::transparent);
    QQuickGraphicsConfiguration configuration;
    configuration.setTimestamps(true);
    window_->setGraphicsConfiguration(configuration);
    window_->setGraphicsDevice(graphics_device_);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Vulkan);
    window_->setVulkanInstance(&vulkan_instance_);
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
    if (root_item_->width() < narrowest_root)
        root_item_->setSize(resolution_);
    window_->contentItem()->setSize(root_item_->size());
    window_->setGeometry(0, 0, static_cast<int>(root_item_->width()),
                         static_cast<int>(root_item_->height()));
    root_item_->setParentItem(window_->contentItem());

    // No window system will ever tell this window that it has the focus, and keys go nowhere without.
    QFocusEvent focus(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window_.get(), &focus);
}

/**
 * A moment after the library's start, the web engine's GPU thread makes a Vulkan instance of its own.
 * The loader writes its list of instances under a lock and reads it without one when it looks up a
 * device's functions, and a look-up that meets the other thread crashes. So a call that takes the lock
 * waits that thread out; then all functions are looked up in one go, and Qt keeps them.
 */
void View::look_up_device_functions()
{
    uint32_t count = 0;
    vulkan_instance_.functions()->vkEnumeratePhysicalDevices(vulkan_instance_.vkInstance(), &count,
                                                             nullptr);
    vulkan_instance_.deviceFunctions(device_);
}

bool View::device_shares_memory()
{
    if (!vulkan_instance_.isValid() || !device_)
        return false;
    look_up_device_functions();
    const auto function_of_device = reinterpret_cast<PFN_vkGetDeviceProcAddr>(
        vulkan_instance_.getInstanceProcAddr("vkGetDeviceProcAddr"));
    return function_of_device(device_, platform::memory_sharing.function) != nullptr;
}

void View::initialize_graphics()
{
    // Left to itself, Qt would take a device of its own, whose textures no host can use.
    if (!vulkan_instance_.isValid() || graphics_device_.isNull()) {
        qWarning(
            "%s: no Vulkan device; call set_view_monitor and set_statistics_monitor before loading",
            qUtf8Printable(objectName()));
        throw std::runtime_error("QQuickRenderControl::initialize() failed");
    }
    look_up_device_functions();
    if (!render_control_->initialize())
        throw std::runtime_error("QQuickRenderControl::initialize() failed");
    release_texture();
    rhi_ = render_control_->rhi();
    if (!rhi_)
        throw std::runtime_error("No QRhi");
    emit gpuNameChanged();
}

void View::create_render_target()
{
    const QSize size = root_item_->size().toSize();
    const int limit = rhi_->resourceLimit(QRhi::TextureSizeMax);
    const bool fits = !size.isEmpty() && size.width() <= limit && size.height() <= limit;
    if (!fits) {
        qWarning("%s: a root item of %d x %d px cannot be drawn; each side must be from 1 to %d px",
                 qUtf8Printable(objectName()), size.width(), size.height(), limit);
    }

    texture_.reset(rhi_->newTexture(QRhiTexture::RGBA8, size, 1,
                                    QRhiTexture::RenderTarget | QRhiTexture::MipMapped
                                        | QRhiTexture::UsedWithGenerateMips));
    if (!fits || !texture_->create())
        throw std::runtime_error("Cannot create texture object");

    depth_stencil_.reset(rhi_->newRenderBuffer(QRhiRenderBuffer::DepthStencil, size, 1));
    if (!depth_stencil_->create())
        throw std::runtime_error("Cannot create depth-stencil buffer");

    QRhiTextureRenderTargetDescription description{QRhiColorAttachment(texture_.get())};
    description.setDepthStencilBuffer(depth_stencil_.get());
    std::unique_ptr<QRhiTextureRenderTarget> target(rhi_->newTextureRenderTarget(description));
    render_pass_.reset(target->newCompatibleRenderPassDescriptor());
    target->setRenderPassDescriptor(render_pass_.get());
    if (!target->create())
        throw std::runtime_error("Cannot create render target");

    render_target_ = std::move(target);
    window_->setRenderTarget(QQuickRenderTarget::fromRhiRenderTarget(render_target_.get()));
    native_texture_ = texture_->nativeTexture().object;
    texture_drawn_ = false;
}

void View::warm_up()
{
    // A new scene's first frame is due at once, however short ago the last one of the old scene was.
    last_frame_ = std::chrono::steady_clock::now() - frame_interval_;
    // On a machine whose frames take longer than the interval, each pass would find one due.
    for (int pass = 0; pass < warm_up_passes && !texture_drawn_; ++pass)
        render();
}

}  // namespace marlune
