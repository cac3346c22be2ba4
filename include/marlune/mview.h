#pragma once

#include <marlune/export.h>

#include <vulkan/vulkan.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace marlune {

class View;

/**
 * A handle to a view: a Qt Quick scene that is rendered offscreen into a texture on the host's own
 * Vulkan device. MView is the base of all kinds of view. A plain MView has no view.
 *
 * @code
 * marlune::MQuickView view;
 * view.set_view_monitor(instance);
 * view.set_statistics_monitor(physical_device, device);
 * view.set_resolution({1280, 720});
 * if (!view.load("Splash", "Splash")) ...
 * while (playing) {
 *     view.render();                                             // once a frame of the game
 *     draw(reinterpret_cast<VkImage>(view.get_texture()));
 * }
 * view.destroy();
 * @endcode
 *
 * **Lifetime.** A facade holds only a pointer to its view: copies share the view, and the view
 * stays alive when a facade goes out of scope. Only destroy() deletes it. A copy that outlives the
 * view is stale: its calls return their defaults, but only until a new view takes the same address
 * in memory. Discard all copies when you destroy the view. The host's instance and device must
 * outlive the view.
 *
 * **Threads.** Members may be called on any thread of the host, also on several at once: each call
 * runs on the Qt thread, and the caller waits until it has been served there, unless the member's
 * comment says that it does not block. Do not assign or destroy a facade object while another
 * thread uses the same object; give each thread its own copy. Callbacks run on the Qt thread and
 * should not call facade members: such a call runs immediately, but reset() and destroy() are
 * deferred until the callback has returned, and load() is refused.
 *
 * **Without a view** (a plain MView, or after destroy()) each member returns at once: it does
 * nothing, or returns the default that its comment names. The same applies to calls whose view is
 * destroyed while they wait, and to calls after M::destroy().
 *
 * **The queue.** Views submit their work to queue 0 of queue family 0, which must support graphics.
 * Vulkan requires that only one thread at a time uses a queue: the host must not use this queue
 * while one of its threads is in load(), render(), reset(), destroy() or set_view_monitor(). A call
 * that does not block, or that is deferred, may use the queue until it has been served. The library
 * neither uses other queues nor waits for them.
 *
 * **The texture.** See get_texture().
 */
class MARLUNE_EXPORT MView {
public:
    /**
     * A console message. `level`: 0 info, 1 warning, 2 error. `line_number` counts from 1. Strings
     * are UTF-8.
     */
    using JavaScriptConsoleLog =
        std::function<void(int level, std::string message, int line_number, std::string source_id)>;

    /**
     * Returns the bytes of the file at `path` and sets `size` to their number; 0 means that there
     * is no such file. The library copies the bytes before it calls the callback again; they remain
     * the host's. The library does not read `flag`.
     */
    using ResourceFile = std::function<uint8_t*(std::string path, bool& flag, uint64_t& size)>;

    /** Creates a facade without a view. The library need not have been started. */
    MView();

    /** Copies share the view. */
    MView(const MView& other);
    MView& operator=(const MView& other);
    /** Moving copies: `other` keeps the view as well. */
    MView& operator=(MView&& other);

    /**
     * Sets the host's Vulkan instance. Call it first when you set a view up. Blocks.
     *
     * Setting the same instance again has no effect. Setting another one releases a loaded scene
     * and its texture. If the instance cannot be used, the library logs the critical message
     * "Failed to create VkInstance".
     */
    void set_view_monitor(VkInstance& instance) const;

    /**
     * Sets the host's devices, which take effect at the next load(). Blocks. Queue 0 of queue
     * family 0 must have been created and must support graphics.
     */
    void set_statistics_monitor(VkPhysicalDevice& physical_device, VkDevice& device) const;

    /**
     * Sets the width and height of the scene in px; default 1920 x 1080. Blocks.
     *
     * Takes effect at the next load(). Each side must be at least 256 px: a smaller one is refused
     * with a warning, and the resolution stays unchanged. A resolution that exceeds the device's
     * limits is accepted here, but the next load() fails. A scene whose root item sets its own size
     * keeps that size.
     */
    void set_resolution(std::tuple<uint32_t, uint32_t> resolution) const;

    /** Returns the requested resolution in px; (0, 0) without a view. Blocks. */
    std::tuple<uint32_t, uint32_t> get_resolution() const;

    /**
     * Limits the rate at which render() draws, in Hz, from 1 to 120; default 60. Blocks.
     *
     * A rate below 1 is refused with a warning; a rate above 120 is set to 120 with a warning. The
     * rate is stored as an interval in whole ms; 60 Hz is stored as 16 ms.
     */
    void set_refresh_rate(int rate) const;

    /**
     * Returns the rate in Hz that corresponds to the stored interval: 63 for an interval of 16 ms.
     * 60 without a view. Blocks.
     */
    int get_refresh_rate() const;

    /**
     * Switches the generation of the texture's mip levels on or off; default off. Blocks.
     *
     * When on, each frame first generates the smaller levels from the current content of level 0
     * and then draws level 0. The smaller levels therefore show the previous frame, and their
     * content is undefined before the second frame. When off, the smaller levels keep their
     * content.
     */
    void set_mipmaps_enabled(bool enabled) const;

    /**
     * Returns the number of mip levels for the requested resolution, for example 11 for 1920 x
     * 1080. 1 before the first load() and without a view. The texture of a scene that sets its own
     * size has the levels of that size. Blocks.
     */
    int get_mips_count() const;

    /**
     * Draws one frame if the refresh interval has passed since the last one. Otherwise, and before
     * load(), does nothing. Blocks until the GPU has finished the frame.
     *
     * If the device has no memory for a frame, the library skips the frame with a warning, and the
     * texture keeps the previous one. If the device is lost, the library logs one critical message
     * and draws nothing until the next load().
     */
    void render() const;

    /**
     * Returns the texture as a `VkImage` handle; 0 before the first load() and without a view.
     * Blocks.
     *
     * - Format: `VK_FORMAT_R8G8B8A8_UNORM`, one sample, one array layer, optimal tiling. The values
     *   are sRGB-encoded.
     * - Alpha: premultiplied. Where the scene draws nothing, the texture is transparent.
     * - Origin: row 0 is the top of the scene.
     * - Size: that of the scene's root item in px. The image has the full mip chain whether or not
     *   mipmaps are enabled.
     * - Layout: after load() and render() the GPU has finished writing, and level 0 is in the
     *   layout `VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL`; so are the other levels once mipmaps
     *   have been generated (before that, their layout is undefined). A host that samples the image
     *   transitions it to the layout that it needs and back, or passes this initial layout to its
     *   renderer.
     * - Usage: colour attachment, sampled, transfer source and destination.
     * - Lifetime: the image stays valid with its last content, also after reset(), until the next
     *   load(), a change of the instance, or destroy().
     */
    uint64_t get_texture() const;

    /**
     * Releases the scene and its GPU memory. The texture stays valid, and the view can be loaded
     * again. Blocks.
     */
    virtual void reset() const;

    /**
     * Deletes the view, its scene and its texture. Blocks. A second call does nothing. The host's
     * GPU work that uses the texture must have finished before the call.
     */
    void destroy();

    /**
     * Presses or releases a mouse button at (x, y), in px from the top left corner. Blocks.
     * @param button 0 left, 1 right, 2 middle, 3 back, 4 forward; others are ignored.
     * @param action 0 press, 1 release; others are ignored.
     *
     * Clicks never carry keyboard modifiers. Like all input, they are ignored before load(). All
     * views share one pointer: release a button before you press one in another view.
     */
    void mouse_click(uint16_t button, uint16_t action, uint32_t x, uint32_t y) const;

    /** Moves the pointer to (x, y), in px. Does nothing if the pointer is already there. Blocks. */
    void mouse_move(uint32_t x, uint32_t y) const;

    /** Turns the wheel by one notch towards the user at (x, y), in px. Blocks. */
    void mouse_wheel_down(uint32_t x, uint32_t y) const;

    /** Turns the wheel by one notch away from the user at (x, y), in px. Blocks. */
    void mouse_wheel_up(uint32_t x, uint32_t y) const;

    /**
     * Presses or releases a key. Blocks until the scene has processed the event.
     * @param key a `Qt::Key` value, for example 0x41 for A or 0x01000020 for Shift.
     * @param action 0 press, 1 release; others are ignored. A release clears the held modifier.
     * @param text the text that the key types, in UTF-8. It can start with one modifier: "Ctrl+c",
     *        "Shift+a", "Alt+x" or "Meta+x". Only one is recognised: "Ctrl+Shift+A" is Control with
     *        the text "Shift+A". If the text contains no "+", a press of a modifier key holds that
     *        modifier until the next release of any key.
     */
    void key_event(uint32_t key, uint16_t action, const std::string& text) const;

    /**
     * Registers the callback for console messages of scripts. It is called on the Qt thread. An
     * empty function unregisters it. Blocks. Messages of web pages are truncated to 65,536
     * characters, with an ellipsis for what is left out.
     */
    void set_func_javascript_console_log(JavaScriptConsoleLog callback) const;

    /**
     * Registers the callback that supplies the files of the "res" scheme, for all views of the
     * process: each registration replaces the previous one. It is called on the Qt thread. Also
     * works on a facade without a view. Blocks, also until the Qt thread is ready.
     */
    void set_func_resource_file(ResourceFile callback) const;

    /**
     * Does nothing; the interface requires it. The host owns the memory that its resource callback
     * returns, and frees it itself.
     */
    void set_func_resource_file_free(std::function<void()> callback) const;

    /**
     * Returns the screens of the machine. Each has "name", "model", "manufacturer", "serialNumber",
     * "availableSize" and "virtualSize" (such as "1920x1040", in px), "isPortrait" and
     * "isLandscape" ("true" or "false"), and "refreshRate" (in Hz, such as "60.000000", with a
     * point in every locale). Empty until the library is ready. Needs no view. Does not block: it
     * reads Qt's list of screens on the calling thread. Do not call it while a screen is being
     * connected or disconnected.
     */
    std::vector<std::map<std::string, std::string>> get_physical_screens() const;

protected:
    View* view_ = nullptr;
};

// Hosts may keep facades where their engine requires small, trivially destructible values.
static_assert(sizeof(MView) == 2 * sizeof(void*));
static_assert(std::is_trivially_destructible_v<MView>);

}  // namespace marlune
