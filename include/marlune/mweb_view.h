#pragma once

#include <marlune/mview.h>
#include <marlune/web_settings.h>

#include <cstdint>
#include <functional>
#include <string>

namespace marlune {

namespace db {
struct AbstractContextObjectStd;
}

namespace detail {
using WebSettingBool = bool;
using WebSettingInt = int;
using WebSettingText = std::string;
// The parameter types of the setters.
using WebSettingBoolValue = bool;
using WebSettingIntValue = int;
using WebSettingTextValue = const std::string&;
}  // namespace detail

/**
 * A view that shows a web page. See MView for what all views have in common.
 *
 * @code
 * marlune::MWebView view;
 * view.set_view_monitor(instance);
 * view.set_statistics_monitor(physical_device, device);
 * view.set_resolution({1280, 720});
 * view.set_zoom_factor(100);
 * view.set_url("res://hud/index.html");
 * if (!view.load()) ...
 * @endcode
 *
 * Settings, published objects and the URL can be set before load() and at any time after it.
 * Navigation is asynchronous: the members return once the engine has received the request, and the
 * callback of set_func_loading_changed() reports the result. No member runs page script before it
 * returns.
 *
 * All web views of the process share one browser profile: its cookies, storage, cache and user
 * agent. Dialogs, lists, menus and tooltips of pages are drawn into the view's own texture and
 * receive the view's mouse and key events; the library opens no window of the operating system.
 *
 * Without a view (see MView) a member returns at once: false, 0 or an empty string, unless its
 * comment says otherwise.
 */
class MARLUNE_EXPORT MWebView : public MView {
public:
    /** Returns false to refuse the navigation. See set_func_navigation_handler(). */
    using NavigationHandler = std::function<bool(std::string url, std::string navigation_type)>;
    /** See set_func_loading_changed(). */
    using LoadingChanged = std::function<void(int status, std::string url, std::string error_domain,
                                              std::string error_string, int error_code)>;
    /** See set_func_page_responding(). */
    using PageResponding = std::function<void(bool responding)>;

    /**
     * Creates a view. Blocks until the Qt thread is ready, and forever if the library is never
     * started.
     */
    MWebView();

    void reset() const override;

    /**
     * Creates the page's scene and draws its first frame, then starts to load the URL. Releases a
     * scene that was loaded before, including its page. Blocks until the scene is ready.
     *
     * Set the instance, the devices and the resolution before.
     * @return true when the scene is ready. False without a view, and if the scene cannot be
     *        created: in that case Qt's log contains the reason.
     */
    bool load() const;

    /**
     * Navigates to an absolute URL; before load(), sets the first URL. Setting the current URL
     * loads it again. Blocks, but returns before the page has loaded; the callback of
     * set_func_loading_changed() reports the progress. A URL without a scheme is not loaded, and
     * the library logs a warning.
     */
    void set_url(std::string url) const;

    /**
     * Returns the URL that was last set; "about:blank" at first. Navigation by the page itself does
     * not change it. Blocks.
     */
    std::string get_url() const;

    /**
     * Loads an HTML text as if it came from `base_url`, against which its relative URLs are
     * resolved; if `base_url` is empty, they are not resolved. Blocks, but returns before the page
     * has loaded. Does nothing before load(). The engine accepts up to 2 MB, where every byte that
     * is not a letter, a digit or one of a few punctuation characters counts as three; a larger
     * text is reported as a failed load. Serve larger pages through the "res" scheme.
     */
    void load_html(std::string html, std::string base_url) const;

    /**
     * Goes back one page in the history. Blocks, but returns before the page has loaded. Does
     * nothing if there is no such page, or before load(). Skips pages that navigated away by
     * themselves before the user clicked or typed on them.
     */
    void back() const;
    /** Goes forward one page in the history, by the same rules. */
    void forward() const;
    /**
     * Goes `offset` pages forward in the history; back if it is negative. Counts every page.
     * Blocks, but returns before the page has loaded.
     */
    void back_or_forward(int offset) const;
    /** Returns whether there is a page to go back to; false before load(). Blocks. */
    bool can_go_back() const;
    /** Returns whether there is a page to go forward to; false before load(). Blocks. */
    bool can_go_forward() const;

    /**
     * Loads the page again, also after its process has ended. Blocks, but returns before the page
     * has loaded.
     */
    void reload() const;
    /** Like reload(), but does not use the cache. */
    void reload_and_bypass_cache() const;

    /**
     * Runs a script in the page, with the rights of the page's own scripts. Blocks until the engine
     * has received the script, but returns before it has run. The result is discarded; an error is
     * reported to the console callback. Does nothing before load().
     */
    void run_javascript(const std::string& script) const;

    /**
     * Registers the handler that accepts or refuses navigations. An empty function unregisters it:
     * all navigations are accepted. Blocks. The library calls the handler on the Qt thread before
     * each navigation, including those into new windows and in frames, but not before navigation
     * within a page. If the handler refuses a navigation, the current page stays.
     *
     * `navigation_type` is one of:
     *
     * - "link_clicked": a link, or a script of the page that navigates;
     * - "typed": set_url(), or load_html(), whose text is passed as a "data:" URL;
     * - "new_window": a link or a script that requests a new window, which opens in this view;
     * - "form_submitted", "back_forward", "reload";
     * - "redirect": a redirect by a server, or a page that refreshes itself;
     * - "other": the first page of a frame.
     *
     * The handler is also called for URLs whose schemes the engine does not know, such as
     * "mygame://quit", so that pages can send commands to the game. Whatever the handler returns,
     * the engine does not navigate, and the system opens no program for such a URL unless
     * set_unknown_url_scheme_policy() allows it.
     *
     * The engine refuses some navigations whatever the handler returns: pages that navigate to
     * "file:" or "qrc:" URLs without having such a URL themselves, and windows with "data:",
     * "blob:", "filesystem:" or "javascript:" URLs. For such windows the handler is not called.
     */
    void set_func_navigation_handler(NavigationHandler handler) const;

    /**
     * Registers the callback for load events. An empty function unregisters it. Blocks. The library
     * calls it on the Qt thread with:
     *
     * - `status`: 0 started, 1 stopped, 2 succeeded, 3 failed;
     * - `url`: the URL of the page;
     * - `error_domain`: "http_status" if a server has responded, with success or an error:
     *   `error_code` is the HTTP status. Otherwise "" if there is no error, or "internal" (also for
     *   a file that the "res" scheme does not have), "connection" (also for an unknown host name),
     *   "certificate", "http", "ftp" or "dns". "process" if the page's process has ended
     *   unexpectedly: `error_code` is its exit code. The view remains usable, and a new URL or
     *   reload() restores the page;
     * - `error_string`: a description of the failure for people;
     * - `error_code`: negative for the codes of the engine's network stack.
     *
     * A navigation that the handler rejects, or that does not lead to a page, is reported as
     * stopped with domain "internal" and code -3. If a load replaces another one, only the start of
     * the first and the end of the last are reported. Loads inside frames are not reported.
     */
    void set_func_loading_changed(LoadingChanged callback) const;

    /**
     * Registers the callback for pages that hang. An empty function unregisters it. Blocks. The
     * library calls it on the Qt thread with false when the page has not responded for 5 s, for
     * example in an endless loop, and with true when the page responds again or is gone. A page
     * that waits for the user to answer a dialog does not count as hanging.
     *
     * set_url(), load_html(), reload() and the navigation in the history end a page that hangs, or
     * that delays them by 5 s for any other reason; the library logs a warning. Until then the page
     * stays as it is.
     */
    void set_func_page_responding(PageResponding callback) const;

// The settings of web_settings.h: for each, a member that sets it and one that returns it. They
// block. A change takes effect immediately in a loaded view.
#define MARLUNE_DECLARE_WEB_SETTING(type, name, property, initial, constness) \
    void set_##name(detail::WebSetting##type##Value value) const;             \
    detail::WebSetting##type get_##name() constness;
    MARLUNE_WEB_SETTINGS(MARLUNE_DECLARE_WEB_SETTING)
#undef MARLUNE_DECLARE_WEB_SETTING

    /**
     * Sets the colour behind the page, which is visible where the page has no background of its
     * own: a colour name or "#aarrggbb". Default "transparent". Blocks.
     */
    void set_background_color(const std::string& color) const;
    /** Returns the text that was last set. Blocks. */
    std::string get_background_color() const;

    /**
     * Sets the zoom in percent: 25, 50, 75, ... 500. Any other number sets the default, 200.
     * Blocks.
     */
    void set_zoom_factor(int percent) const;

    /**
     * Returns 1.0 if a zoom other than 0 is set, which is always the case, and 0.0 without a view.
     * The interface requires it. Blocks.
     */
    double get_zoom_factor() const;

    /**
     * Returns the factor that set_zoom_factor() derives from a percentage: 0.25 ... 5.0. Needs no
     * view. Does not block.
     */
    static double _translate_zoom_factor(int percent);

    // --- The shared profile of all web views. set_user_agent(), set_otr(), set_storage_path() and
    // set_cookie() need a started library but no view; before the start they do nothing. All
    // members of this group block.

    /** Sets the user agent that is sent with requests from now on. */
    void set_user_agent(const std::string& user_agent) const;

    /**
     * Returns the view's own user agent text, which set_user_agent() does not change; empty without
     * a view.
     */
    std::string get_user_agent() const;

    /**
     * Sets whether the profile is off the record. If true, the default, nothing is written to disk,
     * and cookies end with the process. If false, cookies are kept, including session cookies.
     *
     * Call it before the first load(). A change from false to true reloads all open pages at the
     * URLs of their views; a change from true to false does not reload them. With a Qt version
     * after 6.8 both changes reload the pages.
     */
    void set_otr(bool off_the_record) const;

    /**
     * Sets the directory for cookies, storage and cache. With a Qt version after 6.8, a change
     * after set_otr(false) reloads all open pages at the URLs of their views.
     */
    void set_storage_path(const std::string& path) const;

    /**
     * Sets a cookie.
     * @param domain for example "example.com", or ".example.com" to include its subdomains.
     * @param same_site "default", "none", "lax" or "strict"; anything else means "default".
     * @param expiry seconds since 1970-01-01 00:00 UTC.
     */
    void set_cookie(std::string domain, std::string path, std::string name, std::string value,
                    bool secure, std::string same_site, int64_t expiry) const;

    // --- An option of the process. These members do not block and need no view.

    /**
     * Sets opts::GPU_DISABLED. The option is read when the library starts: later changes have no
     * effect.
     */
    void set_disable_gpu(bool disabled) const;
    /** Returns opts::GPU_DISABLED. */
    bool get_disable_gpu() const;

    // --- Objects for the page. See context_object_std.h for the records.

    /**
     * Publishes an object to this view's pages under a name. Blocks. Before load() the library
     * keeps the registration and publishes the object during load(). The object stays published
     * through reset() and later calls of load(). An open page gets it at once, later pages when
     * they load. Pages do not see objects whose names contain a point. If the name is already used,
     * the registration is refused and the first object stays; the library logs a warning, except
     * before the first load().
     * @return true, even if the registration was refused; false without a view.
     */
    bool webchannel_registerObject(const std::string& name,
                                   db::AbstractContextObjectStd* object) const;

    /**
     * Withdraws an object; after that, the host may free its records. Blocks. Refused with a
     * warning if no object has this name. Before the first successful load() every withdrawal is
     * refused with a warning: an object that is already registered then stays registered, and its
     * records must stay valid until it is withdrawn after load() or its view is destroyed.
     * @return true, even if the withdrawal was refused; false without a view.
     */
    bool webchannel_deregisterObject(const std::string& name) const;

    /**
     * Returns the record published under a name, or null. Before the first successful load() there
     * is none. Does not block: it reads the registry on the calling thread under a lock.
     */
    db::AbstractContextObjectStd* webchannel_getObject(const std::string& name) const;
};

static_assert(sizeof(MWebView) == sizeof(MView));

}  // namespace marlune
