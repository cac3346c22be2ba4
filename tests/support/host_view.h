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

/** Gives a view a device and a resolution, as each host does before it loads. */
void set_up(const MView& view, Size resolution = {}, VulkanHost& host = test::host());

/** What all kinds of view of the tests have in common. See HostViewOf. */
class HostViewBase {
public:
    HostViewBase(const HostViewBase&) = delete;
    HostViewBase& operator=(const HostViewBase&) = delete;

    /** Draws a frame if one is due. */
    void render();

    /** Draws exactly one frame: waits until one is due, as a host does that keeps a steady pace. */
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

    /** The texture's content, of a scene that has the view's resolution or the size given. */
    Image picture(uint32_t level = 0);
    Image picture(Size size, uint32_t level = 0);

    /** Presses and releases a key. */
    void type(uint32_t key, const std::string& text = {});

    /** Messages of the scene since the last look. */
    ConsoleLog& console() { return *console_; }

protected:
    /** `view` must outlive this object. */
    HostViewBase(MView& view, Size resolution, VulkanHost& host);
    ~HostViewBase() = default;

    /** To be called after each loading, which draws a frame by itself. */
    void note_frame();

private:
    MView& view_;
    VulkanHost& host_;
    Size resolution_;
    std::shared_ptr<ConsoleLog> console_ = std::make_shared<ConsoleLog>();
    std::chrono::steady_clock::time_point last_asked_;
};

/** Starts the library when that has not been done, makes a view, and destroys it when it goes. */
template <typename Facade>
class ViewOwner {
protected:
    ViewOwner() : facade_((start_library(), Facade())) {}
    ~ViewOwner() { facade_.destroy(); }

    Facade facade_;
};

/**
 * A view as a host has it: on the shared device, with a resolution and a console callback. Starts
 * the library when that has not been done, and destroys the view when it goes.
 */
template <typename Facade>
class HostViewOf : private ViewOwner<Facade>,  // first: the other base uses its facade
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

    /** Loads one of the tests' own scenes, which belong to the module "Scenes". */
    bool load(const std::string& scene);

    /** How many frames the scene ContextProbe has seen. */
    int frames_rendered();
};

/** A callback that writes to `log`, which it keeps alive. */
MView::JavaScriptConsoleLog write_to(std::shared_ptr<ConsoleLog> log);

}  // namespace marlune::test
