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
 * Vulkan device. MView is the base of all kinds of view; constructed by itself it has no view.
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
 * **Lifetime.** A facade is a pointer to its view and nothing else: copies share the view, and
 * dropping a facade leaves the view alive. Only destroy() ends it. A copy that outlives the view
 * is stale: its calls return their defaults, as long as no view made later has taken the same
 * place in memory, so drop copies when you destroy the view. The host's instance and device must
 * outlive the view.
 *
 * **Threads.** Members may be called on any thread of the host, on several at once too: each call is
 * carried to the Qt thread, and the caller waits until it has been served there. One facade object
 * must not be assigned or destroyed while another thread uses that same object; give each thread
 * its own copy. Callbacks run on the Qt thread. A callback should not call a facade member: such a
 * call runs in place, but reset() and destroy() are put off until the callback has returned, and
 * loading is refused.
 *
 * **Without a view** (a plain MView, or after destroy()) each member returns at once with the value
 * that its comment names, or does nothing. The same holds for a call whose view is destroyed while
 * the call waits, and for calls made after M::destroy().
 *
 * **The queue.** Views submit their work to queue 0 of queue family 0, which must offer graphics.
 * Vulkan wants a queue to be used by one thread at a time: the host must not use that queue while
 * one of its threads is in load(), render(), reset(), destroy() or set_view_monitor(). Calls that do
 * not wait, or are put off, use it until they have been served. Other queues are neither used nor
 * waited for.
 *
 * **The texture.** See get_texture().
 */
class MARLUNE_EXPORT MView {
public:
    /** `level` 0 info, 1 warning, 2 error; `line_number` counts from 1; strings are UTF-8. */
    using JavaScriptConsoleLog =
        std::function<void(int level, std::string message, int line_number, std::string source_id)>;

    /**
     * Returns the bytes of the file at `path` and sets `size` to their count; a size of 0 says that
     * there is no such file. The bytes are copied before the callback is called again, and stay the
     * host's. `flag` is not read.
     */
    using ResourceFile = std::function<uint8_t*(std::string path, bool& flag, uint64_t& size)>;

    /** Makes a facade without a view. Needs no started library. */
    MView();

    /** Copies share the view. */
    MView(const MView& other);
    MView& operator=(const MView& other);
    /** Moving copies: `other` keeps the view too. */
    MView& operator=(MView&& other);

    /**
     * Gives the host's instance to the view. First of the calls that set a view up. Blocks.
     *
     * Giving the same instance again changes nothing. Giving another one tears a loaded scene down
     * and releases its texture. An instance that cannot be used is reported as a critical message
     * ("Failed to create VkInstance").
     */
    void set_view_monitor(VkInstance& instance) const;

    /**
     * Gives the host's devices to the view; used from the next load on. Blocks.
     * Queue 0 of queue family 0 must have been created and offer graphics.
     */
    void set_statistics_monitor(VkPhysicalDevice& physical_device, VkDevice& device) const;

    /**
     * Sets width and height of the scene in px; default 1920 x 1080. Blocks.
     *
     * Takes effect at the next load. Each side must be at least 256: a smaller one is refused with a
     * warning, and the resolution stays as it was. One that the device cannot draw is kept, and the
     * load that needs it fails. A scene whose root item has a size of its own keeps that size.
     */
    void set_resolution(std::tuple<uint32_t, uint32_t> resolution) const;

    /** The resolution asked for, in px; (0, 0) without a view. Blocks. */
    std::tuple<uint32_t, uint32_t> get_resolution() const;

    /**
     * Caps the rate at which render() draws, in Hz, from 1 to 120; default 60. Blocks.
     *
     * A rate below 1 is refused with a warning, one above 120 becomes 120 with a warning. The rate is
     * kept as an interval in whole ms, and 60 Hz as 16 ms.
     */
    void set_refresh_rate(int rate) const;

    /** The rate that the interval gives, in Hz: 63 for an interval of 16 ms. 60 without a view. Blocks. */
    int get_refresh_rate() const;

    /**
     * Switches the generation of the texture's mip levels; default off. Blocks.
     *
     * With mipmaps on, each frame first makes the smaller levels from what level 0 holds, then draws
     * level 0 anew: the smaller levels show the frame before, and have no defined content before the
     * second frame. With mipmaps off they are left as they are.
     */
    void set_mipmaps_enabled(bool enabled) const;

    /**
     * The number of mip levels for the resolution asked for, 11 for 1920 x 1080. 1 before loading
     * and without a view. A scene with a size of its own has the levels of that size. Blocks.
     */
    int get_mips_count() const;

    /**
     * Draws one frame if the refresh interval has passed since the last one; otherwise, or before
     * loading, does nothing. Blocks until the GPU has finished the frame.
     *
     * A frame for which the device has no memory is left out with a warning, and the texture keeps
     * the one before. A lost device is reported once, as a critical message; then nothing is drawn
     * until the next load.
     */
    void render() const;

    /**
     * The texture as a `VkImage` handle; 0 before the first loading and without a view. Blocks.
     *
     * - Format `VK_FORMAT_R8G8B8A8_UNORM`, one sample, one array layer, optimal tiling; values are
     *   sRGB-encoded.
     * - Alpha is premultiplied; what the scene does not draw is transparent.
     * - Row 0 is the top of the scene.
     * - The size is that of the scene's root item, in px; memory for the full mip chain is there
     *   whether or not mipmaps are on.
     * - After load() and render() the GPU has finished writing, and level 0 is in the layout
     *   `VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL`; so are the other levels once mipmaps have been
     *   generated (they are undefined before). A host that samples the image moves it to the layout
     *   it needs and back, or tells its renderer this initial layout.
     * - Usage: colour attachment, sampled, transfer source and destination.
     * - The image stays valid, with its last content, through reset(), and until the next loading,
     *   a change of the instance, or destroy().
     */
    uint64_t get_texture() const;

    /**
     * Tears the scene down and frees its graphics memory; the texture stays valid. The view can be
     * loaded again. Blocks.
     */
    virtual void reset() const;

    /**
     * Deletes the view, its scene and its texture. Blocks. A second call does nothing.
     * The host's GPU work that uses the texture must have ended.
     */
    void destroy();

    /**
     * Presses or releases a mouse button at (x, y), in px from the top left corner. Blocks.
     * @param button 0 left, 1 right, 2 middle, 3 back, 4 forward; others are ignored.
     * @param action 0 press, 1 release; others are ignored.
     * Clicks never carry keyboard modifiers. Ignored before loading, as is all input.
     * All views share one pointer: release a button before you press one in another view.
     */
    void mouse_click(uint16_t button, uint16_t action, uint32_t x, uint32_t y) const;

    /** Moves the pointer to (x, y), in px. A move to where it already is does nothing. Blocks. */
    void mouse_move(uint32_t x, uint32_t y) const;

    /** Turns the wheel by one notch towards the user at (x, y), in px. Blocks. */
    void mouse_wheel_down(uint32_t x, uint32_t y) const;

    /** Turns the wheel by one notch away from the user at (x, y), in px. Blocks. */
    void mouse_wheel_up(uint32_t x, uint32_t y) const;

    /**
     * Presses or releases a key. Blocks until the scene has reacted.
     * @param key a `Qt::Key` value, for example 0x41 for A or 0x01000020 for Shift.
     * @param action 0 press, 1 release; others are ignored. A release forgets the held modifier.
     * @param text what the key types, UTF-8. One modifier may be named in front: "Ctrl+c",
     *        "Shift+a", "Alt+x", "Meta+x" (one only: of "Ctrl+Shift+A" Control is taken, and
     *        "Shift+A" is left as the text). Without a "+" in the text, the modifier keys themselves
     *        are held from their press to the next release of any key.
     */
    void key_event(uint32_t key, uint16_t action, const std::string& text) const;

    /**
     * Sets what is told of the console messages of scripts, on the Qt thread. Empty: nobody. Blocks.
     * Of messages of web pages come 65,536 characters, and an ellipsis for what is left out.
     */
    void set_func_javascript_console_log(JavaScriptConsoleLog callback) const;

    /**
     * Sets what serves the "res" scheme's files, on the Qt thread, for all views of the process: the
     * last one set counts. Works on a facade without a view too. Blocks, also for the start of the
     * Qt thread.
     */
    void set_func_resource_file(ResourceFile callback) const;

    /** Does nothing: the host keeps what its resource callback returns and frees it as it likes. */
    void set_func_resource_file_free(std::function<void()> callback) const;

    /**
     * The screens of the machine, each with "name", "model", "manufacturer", "serialNumber",
     * "availableSize" and "virtualSize" (as in "1920x1040", px), "isPortrait" and "isLandscape"
     * ("true" or "false"), "refreshRate" (Hz, as in "60.000000", with a point in every locale). Empty
     * until the library is ready. Reads Qt's screen list on the calling thread, without blocking: call
     * it when no screen is being plugged in or out.
     */
    std::vector<std::map<std::string, std::string>> get_physical_screens() const;

protected:
    View* view_ = nullptr;
};

// A host may keep facades where its engine wants plain, small values.
static_assert(sizeof(MView) == 2 * sizeof(void*));
static_assert(std::is_trivially_destructible_v<MView>);

}  // namespace marlune
