// The set-up of a view's scene: the steps of View::load_module in their order.

#include "views/view.h"

#include "runtime/host_callback.h"
#include "runtime/platform.h"
#include "runtime/process_end.h"
#include "runtime/startup.h"
#include "runtime/trace.h"
#include "views/component_files.h"
#include "views/loader_lock.h"
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
#include <QQuickRenderTarget>
#include <QQuickWindow>
#include <QVulkanFunctions>
#include <rhi/qrhi.h>

#include <algorithm>
#include <chrono>
#include <limits>
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
        release_texture();
        return false;
    }
    trace("load_module done", "T");
    post_setup(engine_.get(), root_item_);
    ready_ = true;
    end_before_what_stands();
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
    // Lets Qt collect them; the view saves them when it ends its QRhi.
    configuration.setAutomaticPipelineCache(false);
    configuration.setPipelineCacheSaveFile(pipeline_file());
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
    if (root_item_->width() < narrowest_root) {
        // Before the scene fills a size that is out of all bounds with content.
        require_drawable(resolution_);
        root_item_->setSize(resolution_);
    }
    require_drawable(root_item_->size());
    window_->contentItem()->setSize(root_item_->size());
    window_->setGeometry(0, 0, static_cast<int>(root_item_->width()),
                         static_cast<int>(root_item_->height()));
    root_item_->setParentItem(window_->contentItem());

    // No window system will ever tell this window that it has the focus, and keys go nowhere without.
    QFocusEvent focus(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window_.get(), &focus);
}

/** In px, of what the host's device can draw to; what Qt can count, as long as there is no device. */
int View::largest_side() const
{
    if (!vulkan_instance_.isValid() || !physical_device_)
        return std::numeric_limits<int>::max() / 2;
    VkPhysicalDeviceProperties properties;
    vulkan_instance_.functions()->vkGetPhysicalDeviceProperties(physical_device_, &properties);
    const VkPhysicalDeviceLimits& limits = properties.limits;
    const uint32_t largest = std::min({limits.maxImageDimension2D, limits.maxFramebufferWidth,
                                       limits.maxFramebufferHeight, limits.maxViewportDimensions[0],
                                       limits.maxViewportDimensions[1]});
    return static_cast<int>(largest);
}

/** Throws unless a texture can have this size. Not in whole px: what is far too large has none. */
void View::require_drawable(QSizeF size) const
{
    const int largest = largest_side();
    // Also false for what is no number.
    const auto fits = [largest](qreal side) { return side >= 0.5 && side < largest + 0.5; };
    if (fits(size.width()) && fits(size.height()))
        return;
    qWarning("%s: a scene of %.0f x %.0f px cannot be drawn; each side must be from 1 to %d px",
             qUtf8Printable(objectName()), size.width(), size.height(), largest);
    throw std::runtime_error("Cannot create texture object");
}

/**
 * All at once, and Qt keeps them. Vulkan's loader (seen with 1.4.309) goes through the drivers of all
 * instances for one of them, vkGetDeviceQueue2, and takes no lock for it that another thread would have
 * that unloads a driver in vkEnumeratePhysicalDevices: so does the web engine's, a moment after the
 * library's start. The look-up crashed there.
 */
void View::look_up_device_functions()
{
    with_loader_locked(vulkan_instance_, [this] { vulkan_instance_.deviceFunctions(device_); });
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
    if (!render_control_->rhi())
        throw std::runtime_error("No QRhi");
    const QString pipelines = window_->graphicsConfiguration().pipelineCacheSaveFile();
    rhi_ = private_graphics::take_rhi(*render_control_, pipelines);
    load_pipelines(*rhi_, pipelines);
    emit gpuNameChanged();
}

void View::create_render_target()
{
    require_drawable(root_item_->size());
    const QSize size = root_item_->size().toSize();
    texture_.reset(rhi_->newTexture(QRhiTexture::RGBA8, size, 1,
                                    QRhiTexture::RenderTarget | QRhiTexture::MipMapped
                                        | QRhiTexture::UsedWithGenerateMips));
    if (!texture_->create())
        throw std::runtime_error("Cannot create texture object");

    depth_stencil_.reset(rhi_->newRenderBuffer(QRhiRenderBuffer::DepthStencil, size, 1));
    if (!depth_stencil_->create())
        throw std::runtime_error("Cannot create depth-stencil buffer");

    QRhiTextureRenderTargetDescription description{QRhiColorAttachment(texture_.get())};
    description.setDepthStencilBuffer(depth_stencil_.get());
    std::unique_ptr<QRhiTextureRenderTarget> target(rhi_->newTextureRenderTarget(description));
    render_pass_.reset(target->newCompatibleRenderPassDescriptor());
    target->setRenderPassDescriptor(render_pass_.get());
    if (!render_pass_ || !target->create())
        throw std::runtime_error("Cannot create render target");

    render_target_ = std::move(target);
    window_->setRenderTarget(QQuickRenderTarget::fromRhiRenderTarget(render_target_.get()));
    native_texture_ = texture_->nativeTexture().object;
    texture_drawn_ = false;
}

/** False when no frame has been drawn, and what the texture holds is undefined. */
bool View::warm_up()
{
    // A new scene's first frame is due at once, however short ago the last one of the old scene was.
    last_frame_ = std::chrono::steady_clock::now() - frame_interval_;
    // On a machine whose frames take longer than the interval, each pass would find one due.
    for (int pass = 0; pass < warm_up_passes && !texture_drawn_; ++pass)
        render();
    return texture_drawn_ && gpu_has_finished();
}

/** Qt waits for each frame, but does not look at how the wait has ended. */
bool View::gpu_has_finished()
{
    const auto* const handles = static_cast<const QRhiVulkanNativeHandles*>(rhi_->nativeHandles());
    QVulkanDeviceFunctions& functions = *vulkan_instance_.deviceFunctions(device_);
    return functions.vkQueueWaitIdle(handles->gfxQueue) == VK_SUCCESS;
}

}  // namespace marlune
