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
// What the setters take.
using WebSettingBoolValue = bool;
using WebSettingIntValue = int;
using WebSettingTextValue = const std::string&;
}  // namespace detail

/**
 * A view that shows a web page. MView tells what all views have in common.
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
 * Settings, objects and the URL may be given before load() or at any time after it. Navigation is
 * asynchronous: the members return when the engine has been told, and set_func_loading_changed() tells
 * what came of it. No member runs page script before it returns.
 *
 * One browser profile is shared by all web views of the process: its cookies, storage, cache and user
 * agent. Dialogs, lists, menus and tooltips of pages are drawn in the view's own texture and take the
 * view's mouse and keys; no window of the operating system is opened.
 *
 * Without a view (see MView) a member returns at once: false, 0 or an empty string unless it says
 * otherwise.
 */
class MARLUNE_EXPORT MWebView : public MView {
public:
    /** False refuses the navigation. */
    using NavigationHandler = std::function<bool(std::string url, std::string navigation_type)>;
    using LoadingChanged = std::function<void(int status, std::string url, std::string error_domain,
                                              std::string error_string, int error_code)>;
    using PageResponding = std::function<void(bool responding)>;

    /** Makes a view. Blocks until the Qt thread is ready; waits for ever if the library is never started. */
    MWebView();

    void reset() const override;

    /**
     * Makes the page's scene and draws its first frame, then begins to load the URL. Blocks until the
     * scene stands. A scene that was loaded before is torn down first, its page with it.
     *
     * Set the instance, the devices and the resolution before.
     * @return true when the scene stands; false when it cannot be made: Qt's log says why.
     */
    bool load() const;

    /**
     * Goes to an absolute URL; before load(), the one to begin with. Blocks, but not for the page.
     * Setting the URL that is already set loads it again.
     */
    void set_url(std::string url) const;

    /**
     * The URL last set; "about:blank" at first. Navigations of the page itself do not change it. Blocks.
     */
    std::string get_url() const;

    /**
     * Shows an HTML text, as if it had come from `base_url`, against which its relative URLs are
     * resolved (empty: nothing). Blocks, but not for the page. Needs a loaded view. The engine takes up
     * to 2 MB, of which each byte counts for three that is no letter, digit or simple sign, and refuses
     * more as a failed load; larger pages are best served by the "res" scheme.
     */
    void load_html(std::string html, std::string base_url) const;

    /**
     * Moves in the page's history. Without a page to go to, and before load(), nothing happens. Blocks.
     * Pages that have gone on by themselves, before anybody has clicked or typed there, are passed over.
     */
    void back() const;
    void forward() const;
    /** By `offset` pages, negative for back. Every page counts. */
    void back_or_forward(int offset) const;
    bool can_go_back() const;
    bool can_go_forward() const;

    /** Loads the page again, also after its process has gone. Blocks, but not for the page. */
    void reload() const;
    void reload_and_bypass_cache() const;

    /**
     * Runs a script in the page, as the page's own. Blocks until the engine has taken it, not for its
     * result, which nobody gets; an error goes to the console callback. Needs a loaded view.
     */
    void run_javascript(const std::string& script) const;

    /**
     * Sets who is asked before each navigation, links into new windows and frames included, but not
     * before moves within a page. Empty: everything is allowed. Blocks. Called on the Qt thread, with one
     * of these types:
     *
     * - "link_clicked", also for a page's script that goes elsewhere;
     * - "typed": set_url(), and load_html(), whose text comes as a "data:" URL;
     * - "new_window": a link or a script that asks for a new window, which opens in this view;
     * - "form_submitted", "back_forward", "reload";
     * - "redirect" by a server, or of a page that refreshes itself;
     * - "other": what frames begin with.
     *
     * The page stays where a navigation is refused.
     *
     * URLs of schemes that the engine does not know, as in "mygame://quit", are asked about like all
     * others, so that pages can command the game by them. Whatever the answer is, the engine goes nowhere
     * then, and no program of the system opens them unless set_unknown_url_scheme_policy() allows it.
     * Three navigations are refused after the question whatever the answer is: windows with "data:",
     * "blob:", "filesystem:" or "javascript:" URLs, of which no question is asked at all, and pages that
     * go to "file:" or "qrc:" URLs without being such themselves.
     */
    void set_func_navigation_handler(NavigationHandler handler) const;

    /**
     * Sets who is told of loading. Empty: nobody. Blocks. Called on the Qt thread with:
     *
     * - `status` 0 started, 1 stopped, 2 succeeded, 3 failed;
     * - `url` of the page;
     * - `error_domain` "http_status" when a server has answered, well or badly: `error_code` is its
     *   status. Else "" without an error, "internal" (also for a file that the "res" scheme does not
     *   have), "connection" (also for an unknown name), "certificate", "http", "ftp", "dns"; or
     *   "process": the page's process has ended by itself, `error_code` is its exit code. The view stays
     *   usable, and a new URL or reload() brings the page back;
     * - `error_string` of a failure, for people;
     * - `error_code`, negative for those of the engine's network part.
     *
     * What the navigation handler refuses, and what gives no page, is told of as stopped, "internal", -3.
     * Where a new loading takes the place of one, only the first one's start and the last one's end are
     * told of. Frames are not told of.
     */
    void set_func_loading_changed(LoadingChanged callback) const;

    /**
     * Sets who is called when the page hangs. Empty: nobody. Blocks. Called on the Qt thread with false
     * when the page has not answered for 5 s, as in an endless loop, and with true when it answers again
     * or is gone. A page that waits for the user's answer to a dialog does not hang.
     *
     * set_url(), load_html(), reload() and the moves in the history end a page that hangs, or that holds
     * them up for 5 s, whatever it does; a message in the log says so. Until then the page stays as it is.
     */
    void set_func_page_responding(PageResponding callback) const;

// The settings: for each, a member that sets it and one that reads it. They block, and take effect at
// once in a loaded view.
#define MARLUNE_DECLARE_WEB_SETTING(type, name, property, initial, constness) \
    void set_##name(detail::WebSetting##type##Value value) const;             \
    detail::WebSetting##type get_##name() constness;
    MARLUNE_WEB_SETTINGS(MARLUNE_DECLARE_WEB_SETTING)
#undef MARLUNE_DECLARE_WEB_SETTING

    /**
     * The colour behind the page, for pages that have none of their own: a name or "#aarrggbb". Default
     * "transparent". Blocks.
     */
    void set_background_color(const std::string& color) const;
    std::string get_background_color() const;

    /**
     * Sets the zoom in percent: 25, 50, 75, ... 500. Any other number sets 200, which is the default too.
     * Blocks.
     */
    void set_zoom_factor(int percent) const;

    /** 1.0 when a zoom other than 0 is set, which is always; 0.0 without a view. Blocks. */
    double get_zoom_factor() const;

    /** What set_zoom_factor() makes of a percentage: 0.25 ... 5.0. */
    static double _translate_zoom_factor(int percent);

    // --- The shared profile, for all web views. These need a started library, but no view; before the
    // start they do nothing. They block.

    /** Sets the user agent that is sent with requests from now on. */
    void set_user_agent(const std::string& user_agent) const;

    /** The view's own user agent text, which set_user_agent() does not change. */
    std::string get_user_agent() const;

    /**
     * With true, nothing is written to disk and cookies end with the process; with false cookies are
     * kept, session cookies too. Off the record until it is called with false.
     * Pages that are open begin anew at their views' URLs when it goes from false to true, and are not
     * told when it goes from true to false: set it before the first load().
     * With a Qt after 6.8, pages that are open begin anew in both cases.
     */
    void set_otr(bool off_the_record) const;

    /**
     * The directory for cookies, storage and cache. With a Qt after 6.8, pages that are open begin anew
     * at their views' URLs when it changes after set_otr(false).
     */
    void set_storage_path(const std::string& path) const;

    /**
     * Sets a cookie.
     * @param domain as in "example.com", or ".example.com" with its subdomains.
     * @param same_site "default", "none", "lax" or "strict"; anything else is "default".
     * @param expiry seconds since 1970-01-01 00:00 UTC.
     */
    void set_cookie(std::string domain, std::string path, std::string name, std::string value,
                    bool secure, std::string same_site, int64_t expiry) const;

    // --- An option of the process. Neither blocks nor needs a view.

    /** Writes opts::GPU_DISABLED, which counts at the start: has no effect on a running library. */
    void set_disable_gpu(bool disabled) const;
    bool get_disable_gpu() const;

    // --- Objects for the page; context_object.h tells about the records.

    /**
     * Publishes an object to this view's pages under a name. Blocks. Before load() it is kept until then,
     * and it stays published through reset() and every later load(). A page that is open gets it at once,
     * later pages when they load. A name that is taken is refused with a warning; the first object stays.
     * Names that hold a point are not shown to pages.
     * @return true, also when it was refused; false without a view.
     */
    bool webchannel_registerObject(const std::string& name,
                                   db::AbstractContextObjectStd* object) const;

    /**
     * Withdraws an object; its records may go afterwards. Blocks. Refused with a warning before the first
     * load() and for a name that is not taken. @return true, also when it was refused; false without a view.
     */
    bool webchannel_deregisterObject(const std::string& name) const;

    /** The record published under a name, or null. Does not wait for the Qt thread. */
    db::AbstractContextObjectStd* webchannel_getObject(const std::string& name) const;
};

static_assert(sizeof(MWebView) == sizeof(MView));

}  // namespace marlune
