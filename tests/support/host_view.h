#pragma once

#include "support/console_log.h"
#include "support/image.h"
#include "support/library.h"
#include "support/vulkan/vulkan_host.h"
#include "support/wait.h"

#include <marlune/mquick_view.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace marlune::test {

/** Width and height in px. */
struct Size {
    uint32_t width = 512, height = 256;
};

/** Sets the device and the resolution of a view, as each host does before it loads. */
void set_up(const MView& view, Size resolution = {}, VulkanHost& host = test::host());

/** The part that all test views share. See HostViewOf. */
class HostViewBase {
public:
    HostViewBase(const HostViewBase&) = delete;
    HostViewBase& operator=(const HostViewBase&) = delete;

    /** Draws a frame if one is due. */
    void render();

    /** Draws exactly one frame: waits until one is due, like a host with a steady frame rate. */
    void draw_frame();

    /** Draws frames until `holds` is true. */
    template <typename Predicate>
    bool draw_until(Predicate holds, std::chrono::milliseconds cap = std::chrono::seconds(10))
    {
        const auto drawn_and_true = [&] {
            render();
            return holds();
        };
        return wait_until(drawn_and_true, cap);
    }

    /** The texture's content, for a scene with the view's resolution or with the given size. */
    Image picture(uint32_t level = 0);
    Image picture(Size size, uint32_t level = 0);

    /** Presses and releases a key. */
    void type(uint32_t key, const std::string& text = {});

    /** The console messages that the test has not taken yet. */
    ConsoleLog& console() { return *console_; }

protected:
    /** `view` must outlive this object. */
    HostViewBase(MView& view, Size resolution, VulkanHost& host);
    ~HostViewBase() = default;

    /** Call this after each load, which draws a frame on its own. */
    void note_frame();

private:
    MView& view_;
    VulkanHost& host_;
    Size resolution_;
    std::shared_ptr<ConsoleLog> console_ = std::make_shared<ConsoleLog>();
    std::chrono::steady_clock::time_point last_asked_;
};

/**
 * Starts the library if it is not running, creates a view, and destroys the view in its destructor.
 */
template <typename Facade>
class ViewOwner {
protected:
    ViewOwner() : facade_((start_library(), Facade())) {}
    ~ViewOwner() { facade_.destroy(); }

    Facade facade_;
};

/**
 * A view as a host uses it: on the shared device, with a resolution and a console callback. Starts
 * the library if it is not running, and destroys the view in its destructor.
 */
template <typename Facade>
class HostViewOf : private ViewOwner<Facade>,  // first: the other base class uses its facade
                   public HostViewBase {
public:
    explicit HostViewOf(Size resolution = {}, VulkanHost& host = test::host())
        : HostViewBase(ViewOwner<Facade>::facade_, resolution, host)
    {
    }

    Facade& facade() { return ViewOwner<Facade>::facade_; }
    Facade* operator->() { return &facade(); }
};

/** A view of QML components. */
class HostView : public HostViewOf<MQuickView> {
public:
    using HostViewOf::HostViewOf;

    /** Loads a scene of the tests' own module "Scenes". */
    bool load(const std::string& scene);

    /** The number of frames that the scene ContextProbe has counted. */
    int frames_rendered();
};

/** A callback that writes to `log` and keeps it alive. */
MView::JavaScriptConsoleLog write_to(std::shared_ptr<ConsoleLog> log);

}  // namespace marlune::test
