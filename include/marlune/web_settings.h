#pragma once

/**
 * The settings of a web view. Each row stands for two members of MWebView, `set_` and `get_` with the
 * row's second word appended: set_javascript_enabled(false). A row: type (Bool, Int or Text), name of
 * the members, name of the property that the view's scene sees as `ctx.`, default, and what stands behind
 * the getter's parentheses.
 */
#define MARLUNE_WEB_SETTINGS(X)                                                                         \
    /** Draws 2D canvases with the graphics hardware, where there is any. */                            \
    X(Bool, accelerated2d_canvas_enabled, accelerated2dCanvasEnabled, true, const)                      \
    /** Lets pages without encryption ask for the place; the request itself is refused all the same. */ \
    X(Bool, allow_geolocation_on_insecure_origins, allowGeolocationOnInsecureOrigins, true, const)      \
    /** Lets an encrypted page run scripts and load frames that are not. */                             \
    X(Bool, allow_running_insecure_content, allowRunningInsecureContent, true, const)                   \
    /** Lets `window.focus()` act. */                                                                   \
    X(Bool, allow_window_activation_from_javascript, allowWindowActivationFromJavaScript, true, const)  \
    /** Downloads the icons of pages. */                                                                \
    X(Bool, auto_load_icons_for_page, autoLoadIconsForPage, true, const)                                \
    /** Loads images without being asked to. */                                                         \
    X(Bool, auto_load_images, autoLoadImages, true, const)                                              \
    /** The encoding of pages that name none, as in "utf-8"; empty for the engine's own. */             \
    X(Text, default_text_encoding, defaultTextEncoding, "", const)                                      \
    /** Looks host names of links up in advance. */                                                     \
    X(Bool, dns_prefetch_enabled, dnsPrefetchEnabled, false, const)                                     \
    /** Shows the engine's own page when loading fails; else the view stays transparent. */             \
    X(Bool, error_page_enabled, errorPageEnabled, false, const)                                         \
    /** Gives the page the keyboard at each navigation. */                                              \
    X(Bool, focus_on_navigation_enabled, focusOnNavigationEnabled, true, const)                         \
    /** Darkens pages that have no dark look of their own. */                                           \
    X(Bool, force_dark_mode, forceDarkMode, false, const)                                               \
    /** Lets an element fill the view (`requestFullscreen()`). */                                       \
    X(Bool, fullscreen_support_enabled, fullscreenSupportEnabled, false, const)                         \
    /** Sends the pings that links ask for (`<a ping>`). */                                             \
    X(Bool, hyperlink_auditing_enabled, hyperlinkAuditingEnabled, false, const)                         \
    /** Lets scripts write to the clipboard without the user having done anything. */                   \
    X(Bool, javascript_can_access_clipboard, javascriptCanAccessClipboard, false, const)                \
    /** Lets scripts open windows without the user having done anything; they open in this view. */     \
    X(Bool, javascript_can_open_windows, javascriptCanOpenWindows, true, const)                         \
    /** Lets scripts read the clipboard; needs javascript_can_access_clipboard too. */                  \
    X(Bool, javascript_can_paste, javascriptCanPaste, false, const)                                     \
    /** Runs scripts at all. Published objects need it. */                                              \
    X(Bool, javascript_enabled, javascriptEnabled, true, const)                                         \
    /** Lets the Tab key reach links. */                                                                \
    X(Bool, links_included_in_focus_chain, linksIncludedInFocusChain, true, const)                      \
    /** Lets pages of the "file" scheme load "file" URLs; those of "res" may in any case. */            \
    X(Bool, local_content_can_access_file_urls, localContentCanAccessFileUrls, true, const)             \
    /** Lets local pages ("res" and "file") load from the network. */                                   \
    X(Bool, local_content_can_access_remote_urls, localContentCanAccessRemoteUrls, true, const)         \
    /** Offers `localStorage` and its kin. */                                                           \
    X(Bool, local_storage_enabled, localStorageEnabled, true, )                                         \
    /** Opens a link or file that is dropped on the page. */                                            \
    X(Bool, navigate_on_drop_enabled, navigateOnDropEnabled, true, const)                               \
    /** Shows PDF documents in the engine's viewer; needs plugins_enabled too. */                       \
    X(Bool, pdf_viewer_enabled, pdfViewerEnabled, true, const)                                          \
    /** Holds back sound and video until the user has done something on the page. */                    \
    X(Bool, playback_requires_user_gesture, playbackRequiresUserGesture, false, const)                  \
    /** Lets pages use plug-ins. */                                                                     \
    X(Bool, plugins_enabled, pluginsEnabled, false, const)                                              \
    /** Keeps backgrounds when a page is printed. */                                                    \
    X(Bool, print_element_backgrounds, printElementBackgrounds, true, const)                            \
    /** Lets scripts read canvases back. */                                                             \
    X(Bool, reading_from_canvas_enabled, readingFromCanvasEnabled, true, const)                         \
    /** Lets pages capture the screen. */                                                               \
    X(Bool, screen_capture_enabled, screenCaptureEnabled, false, const)                                 \
    /** Draws scroll bars. */                                                                           \
    X(Bool, show_scroll_bars, showScrollBars, false, )                                                  \
    /** Moves the focus with the arrow keys. */                                                         \
    X(Bool, spatial_navigation_enabled, spatialNavigationEnabled, false, const)                         \
    /** Downloads touch icons of pages. */                                                              \
    X(Bool, touch_icons_enabled, touchIconsEnabled, false, const)                                       \
    /** Has the system open URLs such as "mailto:": 0, 1 never, 2 after an act of the user, 3 always. */\
    X(Int, unknown_url_scheme_policy, unknownUrlSchemePolicy, 0, const)                                 \
    /** Offers WebGL, where the engine's block list allows it. */                                       \
    X(Bool, webGLenabled, webGLEnabled, true, const)                                                    \
    /** Hides the local addresses of the machine from WebRTC. */                                        \
    X(Bool, webRTCpublic_interfaces_only, webRTCPublicInterfacesOnly, false, const)
