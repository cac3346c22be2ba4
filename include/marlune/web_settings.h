#pragma once

/**
 * The settings of a web view, one per row. A row with the name javascript_enabled stands for two
 * members of MWebView: set_javascript_enabled() and get_javascript_enabled().
 *
 * The columns: the type (Bool, Int or Text), the name of the members, the name of the property of
 * `ctx` in the view's scene, the default, and the cv-qualifier of the getter. The comment on a row
 * says what the setting does when it is true, unless it says otherwise.
 */
#define MARLUNE_WEB_SETTINGS(X)                                                                    \
    /** Draws 2D canvases on the GPU if there is one. */                                           \
    X(Bool, accelerated2d_canvas_enabled, accelerated2dCanvasEnabled, true, const)                 \
    /** Lets unencrypted pages request the location. The library refuses every request. */         \
    X(Bool, allow_geolocation_on_insecure_origins, allowGeolocationOnInsecureOrigins, true, const) \
    /** Lets encrypted pages run scripts and load frames that are not encrypted. */                \
    X(Bool, allow_running_insecure_content, allowRunningInsecureContent, true, const)              \
    /** Lets `window.focus()` activate the page. */                                                \
    X(Bool, allow_window_activation_from_javascript, allowWindowActivationFromJavaScript, true,    \
      const)                                                                                       \
    /** Downloads the icons of pages. */                                                           \
    X(Bool, auto_load_icons_for_page, autoLoadIconsForPage, true, const)                           \
    /** Loads images automatically. */                                                             \
    X(Bool, auto_load_images, autoLoadImages, true, const)                                         \
    /** Encoding of pages that declare none, such as "utf-8". Empty: the engine's default. */      \
    X(Text, default_text_encoding, defaultTextEncoding, "", const)                                 \
    /** Resolves the host names of links in advance. */                                            \
    X(Bool, dns_prefetch_enabled, dnsPrefetchEnabled, false, const)                                \
    /** Shows the engine's error page when loading fails. When false, the view is transparent. */  \
    X(Bool, error_page_enabled, errorPageEnabled, false, const)                                    \
    /** Gives the page the keyboard focus at each navigation. */                                   \
    X(Bool, focus_on_navigation_enabled, focusOnNavigationEnabled, true, const)                    \
    /** Darkens pages that have no dark theme of their own. */                                     \
    X(Bool, force_dark_mode, forceDarkMode, false, const)                                          \
    /** Lets an element fill the view (`requestFullscreen()`). */                                  \
    X(Bool, fullscreen_support_enabled, fullscreenSupportEnabled, false, const)                    \
    /** Sends the pings that links request (`<a ping>`). */                                        \
    X(Bool, hyperlink_auditing_enabled, hyperlinkAuditingEnabled, false, const)                    \
    /** Lets scripts write to the clipboard without user activation. */                            \
    X(Bool, javascript_can_access_clipboard, javascriptCanAccessClipboard, false, const)           \
    /** Lets scripts open windows without user activation; they open in this view. */              \
    X(Bool, javascript_can_open_windows, javascriptCanOpenWindows, true, const)                    \
    /** Lets scripts read the clipboard; also needs javascript_can_access_clipboard. */            \
    X(Bool, javascript_can_paste, javascriptCanPaste, false, const)                                \
    /** Runs scripts. Published objects need it. */                                                \
    X(Bool, javascript_enabled, javascriptEnabled, true, const)                                    \
    /** Lets the Tab key reach links. */                                                           \
    X(Bool, links_included_in_focus_chain, linksIncludedInFocusChain, true, const)                 \
    /** Lets pages of the "file" scheme load "file" URLs; pages of "res" always may. */            \
    X(Bool, local_content_can_access_file_urls, localContentCanAccessFileUrls, true, const)        \
    /** Lets local pages ("res" and "file") load from the network. */                              \
    X(Bool, local_content_can_access_remote_urls, localContentCanAccessRemoteUrls, true, const)    \
    /** Offers `localStorage` and similar storage. */                                              \
    X(Bool, local_storage_enabled, localStorageEnabled, true, )                                    \
    /** Opens a link or file that the user drops on the page. */                                   \
    X(Bool, navigate_on_drop_enabled, navigateOnDropEnabled, true, const)                          \
    /** Shows PDF documents in the engine's viewer; also needs plugins_enabled. */                 \
    X(Bool, pdf_viewer_enabled, pdfViewerEnabled, true, const)                                     \
    /** Does not play sound and video until the user has interacted with the page. */              \
    X(Bool, playback_requires_user_gesture, playbackRequiresUserGesture, false, const)             \
    /** Lets pages use plug-ins. */                                                                \
    X(Bool, plugins_enabled, pluginsEnabled, false, const)                                         \
    /** Prints the backgrounds of pages. */                                                        \
    X(Bool, print_element_backgrounds, printElementBackgrounds, true, const)                       \
    /** Lets scripts read the pixels of canvases. */                                               \
    X(Bool, reading_from_canvas_enabled, readingFromCanvasEnabled, true, const)                    \
    /** Lets pages capture the screen. */                                                          \
    X(Bool, screen_capture_enabled, screenCaptureEnabled, false, const)                            \
    /** Draws scroll bars. */                                                                      \
    X(Bool, show_scroll_bars, showScrollBars, false, )                                             \
    /** Moves the focus with the arrow keys. */                                                    \
    X(Bool, spatial_navigation_enabled, spatialNavigationEnabled, false, const)                    \
    /** Downloads the touch icons of pages. */                                                     \
    X(Bool, touch_icons_enabled, touchIconsEnabled, false, const)                                  \
    /** When the system opens URLs such as "mailto:": 0, 1 never, 2 by the user, 3 always. */      \
    X(Int, unknown_url_scheme_policy, unknownUrlSchemePolicy, 0, const)                            \
    /** Offers WebGL unless the engine's block list forbids it. */                                 \
    X(Bool, webGLenabled, webGLEnabled, true, const)                                               \
    /** Hides the machine's local IP addresses from WebRTC. */                                     \
    X(Bool, webRTCpublic_interfaces_only, webRTCPublicInterfacesOnly, false, const)
