#pragma once

#include "support/console_log.h"
#include "support/image.h"
#include "support/vulkan_host.h"
#include "support/wait.h"

#include <marlune/quick_view.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace marlune::test {

/** Width and height in px. */
struct Size {
    uint32_t width = 512, height = 256;
};

/**
 * A view as a host has it: on the shared device, with a resolution and a console callback. Starts
 * the library when that has not been done, and destroys the view when it goes.
 */
class HostView {
public:
    explicit HostView(Size resolution = {}, VulkanHost& host = test::host());
    ~HostView();
    HostView(const HostView&) = delete;
    HostView& operator=(const HostView&) = delete;

    MQuickView& facade() { return facade_; }
    MQuickView* operator->() { return &facade_; }

    /** Loads one of the tests' own scenes, which belong to the module "Scenes". */
    bool load(const std::string& scene);

    /** Draws a frame if one is due. */
    void render();

    /** Draws exactly one frame: waits until one is due, as a host does that keeps a steady pace. */
    void draw_frame();

    /** Draws frames until `holds` is true. */
    template <typename Predicate>
    bool draw_until(Predicate holds)
    {
        return wait_until([&] {
            render();
            return holds();
        });
    }

    /** The texture's content, of a scene that has the view's resolution or the size given. */
    Image picture(uint32_t level = 0);
    Image picture(Size size, uint32_t level = 0);

    /** Presses and releases a key. */
    void type(uint32_t key, const std::string& text = {});

    /** Messages of the scene since the last look. */
    ConsoleLog& console() { return *console_; }

private:
    VulkanHost& host_;
    Size resolution_;
    MQuickView facade_;
    std::shared_ptr<ConsoleLog> console_ = std::make_shared<ConsoleLog>();
    std::chrono::steady_clock::time_point last_asked_;
};

/** A callback that writes to `log`, which it keeps alive. */
MView::JavaScriptConsoleLog write_to(std::shared_ptr<ConsoleLog> log);

}  // namespace marlune::test
