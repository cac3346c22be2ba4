pragma ComponentBehavior: Bound

import QtQuick
import QtWebChannel
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    The scene of a web view: the browser item, bound to the properties that the host sets on the
    view.

    The browser item is created after the first frame. Its engine uses the Vulkan loader on another
    thread, which must not happen while the window's graphics are being initialised.
*/
Item {
    id: root

    property WebChannel webChannel: WebChannel {}
    // The channel of the browser item. The view forwards pages from it to the other channel.
    readonly property WebChannel gate: WebChannel {}

    readonly property var view: ctx // qmllint disable unqualified
    readonly property color background: view.backgroundColor
    // The background that the engine can draw: it does not accept partly transparent colours.
    readonly property color opaqueBackground: background.a === 1 ? background : "transparent"
    readonly property WebEngineProfile profile: customWebProfile // qmllint disable unqualified
    // The Vulkan extension that lets the host's device import frames that were made on the GPU.
    readonly property string memoryExtension: webMemoryExtension // qmllint disable unqualified
    // As far as is known by now, the device can import the engine's frames.
    readonly property bool fits: webDeviceFits // qmllint disable unqualified
    readonly property list<string> settingNames: webSettings // qmllint disable unqualified
    // True for engines after that of Qt 6.8. They run the library's scripts late in pages that are
    // loaded from an HTML text, and can lose a navigation that is requested while they show a blank
    // page.
    readonly property bool isNew: webEngineIsNew // qmllint disable unqualified
    readonly property var watch: pageWatch // qmllint disable unqualified
    readonly property WebEngineView page: started ? browser.item as WebEngineView : null

    // True once the browser item has its settings and follows the view.
    property bool started
    // This scene has found out that the engine uses software rendering.
    property bool usesSoftwareRendering
    // The host's device cannot import the frames that the engine makes.
    property bool undrawable

    // Requests that were made before the page existed; the latest of them, if no page ever comes.
    property var waiting: []
    readonly property int mostWaiting: 1000
    // The host's last navigation request, until the engine has acted on it.
    property var order: null
    // The request may have to be repeated.
    property bool again
    // False while load events can still be those of the blank page before the request.
    property bool orderStarted
    // The page has a process that can answer a liveness check.
    property bool answering
    // The navigation request for which the page's process was ended.
    property var heldUp: null
    // The address for which the page requests a new window.
    property string windowAddress

    // The navigation types that pages cause.
    readonly property list<string> ofPages: ["link_clicked", "form_submitted", "redirect"]
    readonly property var navigationTypes: ({
        [WebEngineNavigationRequest.LinkClickedNavigation]: "link_clicked",
        [WebEngineNavigationRequest.TypedNavigation]: "typed",
        [WebEngineNavigationRequest.FormSubmittedNavigation]: "form_submitted",
        [WebEngineNavigationRequest.BackForwardNavigation]: "back_forward",
        [WebEngineNavigationRequest.ReloadNavigation]: "reload",
        [WebEngineNavigationRequest.RedirectNavigation]: "redirect"
    })
    // These scripts run before any script of a page. The engine accepts them once the profile is
    // set.
    readonly property var scripts: [
        {
            name: "objects",
            sourceUrl: "qrc:/Web/assets/test.min.js",
            injectionPoint: WebEngineScript.DocumentCreation,
            worldId: WebEngineScript.MainWorld
        },
        pageScript("drag_and_drop", WebEngineScript.MainWorld),
        // These run in a world of their own, so that they also run where the settings forbid
        // scripts of pages.
        pageScript("native_drag", WebEngineScript.ApplicationWorld),
        pageScript("full_screen", WebEngineScript.ApplicationWorld)
    ]

    // The schemes that the engine loads by itself.
    readonly property var ownSchemes: new RegExp("^(about|blob|chrome|chrome-error|chrome-extension|data|devtools|"
        + "file|filesystem|ftp|https?|javascript|qrc|res|view-source|wss?):", "i")

    // In characters. The host gets only the beginning of longer messages.
    readonly property int longestMessage: 65536

    // Indexed by the engine's numbers.
    readonly property list<string> errorDomains: [
        "", "internal", "connection", "certificate", "http", "ftp", "dns", "http_status"
    ]

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    focus: true

    function pageScript(name: string, world: int): var {
        return {
            name: name,
            sourceUrl: `qrc:/Web/page_scripts/${name}.js`,
            injectionPoint: WebEngineScript.DocumentCreation,
            worldId: world,
            runsOnSubFrames: true
        };
    }

    function whenThere(work: var): void {
        if (page)
            work(page);
        else if (!undrawable && waiting.push(work) > mostWaiting)
            waiting.shift();
    }

    // Navigates the page, and prevents the page from delaying that.
    function send(work: var): void {
        extras.forgiving = true;
        whenThere(page => {
            if (heldUp) {
                heldUp = work;
                return;
            }
            order = work;
            again = false;
            orderStarted = false;
            if (watch.hanging)
                endPage();
            else if (extras.leaving)
                askAgain(page);
            else
                work(page);
        });
    }

    // The dialog that asks whether to leave the page belongs to an older request. The engine can
    // process the new one once the page continues: sent too early, it is lost together with the
    // older one and has to be repeated.
    function askAgain(page: WebEngineView): void {
        const work = order;
        again = true;
        extras.withdraw();
        page.runJavaScript("0", WebEngineScript.ApplicationWorld, () => {
            if (order === work)
                work(page);
        });
    }

    // The page has had the request for some time and does not navigate.
    function settle(page: WebEngineView): void {
        const work = order;
        orderStarted = true;
        if (again)
            work(page);
        else
            order = null;
        again = false;
    }

    function noteForOrder(info: webEngineLoadingInfo): void {
        const succeeded = info.status === WebEngineView.LoadSucceededStatus;
        if (info.status === WebEngineView.LoadStartedStatus)
            orderStarted = orderStarted || info.url.toString() !== "about:blank";
        else if (isNew && succeeded && order && !orderStarted)
            again = true;
        else if (succeeded || info.status === WebEngineView.LoadFailedStatus)
            order = null;
    }

    function endPage(): void {
        console.warn(`${view.objectName}: the page does not respond and was ended, so that the view can continue`);
        heldUp = order;
        order = null;
        watch.end_process(page.renderProcessPid);
    }

    // Only once: a page that hangs after that is not the one that delayed the request.
    function takeUpOrder(): void {
        const work = heldUp;
        heldUp = null;
        if (work)
            whenThere(work);
    }

    function load_html(html, base_url) {
        send(page => page.loadHtml(html, base_url));
    }

    function back(): void {
        send(page => page.goBack());
    }

    function forward(): void {
        send(page => page.goForward());
    }

    function back_or_forward(offset: int): void {
        send(page => page.goBackOrForward(offset));
    }

    function can_go_back() {
        return page?.canGoBack ?? false;
    }

    function can_go_forward() {
        return page?.canGoForward ?? false;
    }

    function reload(): void {
        send(page => page.reload());
    }

    function reload_and_bypass_cache(): void {
        send(page => page.reloadAndBypassCache());
    }

    function run_javascript(script) {
        whenThere(page => page.runJavaScript(script));
    }

    function typeOf(request: var): string {
        const type = navigationTypes[request.navigationType] ?? "other";
        const opens = request.isMainFrame && ofPages.includes(type)
            && request.url.toString() === windowAddress;
        if (opens)
            windowAddress = "";
        return opens ? "new_window" : type;
    }

    // The handler of the host is called first, also for navigations that are refused below.
    function mayGo(request: var): bool {
        const type = typeOf(request);
        const url = request.url.toString();
        return view.navigation_handler(url, type) && !isForOthers(url)
            && !(request.isMainFrame && leavesForDisk(url, type));
    }

    // The engine would let the system open the URL, in a window of another program. That happens
    // only if the host has chosen such a policy.
    function isForOthers(url: string): bool {
        const policy = view.unknownUrlSchemePolicy;
        if (policy === WebEngineSettings.AllowUnknownUrlSchemesFromUserInteraction
                || policy === WebEngineSettings.AllowAllUnknownUrlSchemes || ownSchemes.test(url))
            return false;
        if (policy === 0)
            extras.log("program", `"${view.shortened(url, 200, 1)}" is for another program and is not opened; `
                       + "see set_unknown_url_scheme_policy");
        return true;
    }

    // Only the host, and pages that are local files themselves, can navigate to local files.
    function leavesForDisk(url: string, type: string): bool {
        const onDisk = /^(file|qrc):/i;
        if (!ofPages.includes(type) && type !== "new_window" || !onDisk.test(url)
                || onDisk.test(page.url.toString()))
            return false;
        extras.log("disk", "the page tried to navigate to a local file; refused");
        return true;
    }

    // A script navigates, so that the page and not the host is the initiator, with only the page's
    // rights.
    function openWindow(address: string): void {
        windowAddress = address;
        page.runJavaScript(`location.assign(${JSON.stringify(address)})`, WebEngineScript.ApplicationWorld);
    }

    function start(): void {
        const page = browser.item as WebEngineView;
        const userScripts = (isNew ? profile : page).userScripts; // qmllint disable
        if (userScripts.collection.length === 0)
            userScripts.collection = scripts;
        // The view's settings have the engine's names, except for one letter of one of them.
        for (const name of settingNames) {
            const engineName = name.replace("fullscreen", "fullScreen");
            page.settings[engineName] = Qt.binding(() => view[name]);
        }
        page.settings.javascriptCanOpenWindows =
            Qt.binding(() => view.javascriptCanOpenWindows && !extras.opensTooManyWindows);
        // With any other policy the engine would not ask about URLs for other programs, and hosts
        // may set numbers that the engine does not know.
        const onUserAction = WebEngineSettings.AllowUnknownUrlSchemesFromUserInteraction;
        page.settings.unknownUrlSchemePolicy = Qt.binding(
            () => view.unknownUrlSchemePolicy === onUserAction
                ? onUserAction : WebEngineSettings.AllowAllUnknownUrlSchemes);
        started = true;
        open(page, view.url);
        const work = waiting;
        waiting = [];
        work.forEach(ask => ask(page));
    }

    // The next frame creates a new page.
    function close_page(): void {
        extras.dismiss();
        answering = false;
        order = heldUp = null;
        started = false;
        probe.active = false;
        browser.active = false;
    }

    function decide(engineUsesGpu: bool): void {
        undrawable = engineUsesGpu;
        if (undrawable)
            waiting = [];
        usesSoftwareRendering = !engineUsesGpu;
        if (engineUsesGpu)
            console.warn(`${view.objectName}: the web engine renders on the GPU, but the host's Vulkan `
                         + `device cannot import its frames. Create the device with ${memoryExtension}, `
                         + "or set GPU_DISABLED before the start.");
        else
            browser.active = true;
    }

    // The engine has a text for each error, but for HTTP errors it is a piece of a page, and it has
    // none for the one failure without a domain: HTML of the host that is too long.
    function describeFailure(domain: string, info: webEngineLoadingInfo): string {
        if (domain === "http_status")
            return `The server responded with status ${info.errorCode}`;
        return domain === "" ? "The HTML is longer than the engine accepts" : info.errorString;
    }

    // The engine would resolve a relative URL against this file.
    function open(page: WebEngineView, url: string): void {
        if (/^[a-z][a-z0-9+.-]*:/i.test(url))
            page.url = url;
    }

    Connections {
        target: root.view
        enabled: !browser.active && !probe.active && !root.undrawable

        function onFrameRendered(): void {
            if (root.fits)
                browser.active = true;
            else
                probe.active = true;
        }
    }

    Connections {
        target: root.view

        function onUrlChanged(url: string): void {
            if (!root.page)
                return;
            root.send(page => root.open(page, url));
            root.orderStarted = url === "about:blank";
        }
    }

    Connections {
        target: root.watch

        function onAsked(): void {
            const order = root.order;
            root.page?.runJavaScript("0", WebEngineScript.ApplicationWorld, () => {
                root.watch.answer();
                if (root.order && root.order === order && !root.page?.loading)
                    root.settle(root.page);
            });
        }

        function onHangingChanged(hanging: bool): void {
            if (hanging && root.order)
                root.endPage();
        }
    }

    // A device without the extension works if the engine uses software rendering, and crashes the
    // engine if it uses the GPU. Only on the GPU is WebGL available, which a page without a window
    // can check.
    Instantiator {
        id: probe

        active: false
        delegate: WebEngineView {
            id: blank

            profile: root.profile
            url: "about:blank"
            onLoadingChanged: info => {
                if (info.status !== WebEngineView.LoadSucceededStatus)
                    return;
                const script = "!!document.createElement('canvas').getContext('webgl')";
                blank.runJavaScript(script, hasWebGL => {
                    probe.active = false;
                    root.decide(hasWebGL);
                });
            }
        }
    }

    // The engine does not draw partly transparent colours, so this item does.
    Rectangle {
        anchors.fill: parent
        color: root.background
    }

    Loader {
        id: browser

        anchors.fill: parent
        focus: true
        active: false
        onLoaded: root.start()

        sourceComponent: WebEngineView {
            id: page

            // The last load has failed. The engine keeps the previous page; it is hidden until the
            // first content of the next page arrives.
            property bool gone
            // The engine keeps drawing the previous page's background behind a page that has none,
            // until its background colour changes.
            property bool refreshing
            readonly property color nudged: Qt.rgba(
                root.opaqueBackground.r, root.opaqueBackground.g,
                Math.abs(root.opaqueBackground.b - 1 / 255), root.opaqueBackground.a)

            function refreshBackground(): void {
                refreshing = true;
                refreshing = false;
            }

            focus: true
            visible: !gone
            profile: root.profile
            webChannel: root.gate
            backgroundColor: refreshing ? nudged : root.opaqueBackground
            zoomFactor: root.view.zoom_factor
            audioMuted: root.view.audio_muted

            onNavigationRequested: request => {
                if (root.mayGo(request))
                    request.accept();
                else
                    request.reject();
            }

            onLoadingChanged: info => {
                const domain = root.errorDomains[info.errorDomain] ?? "internal";
                const failed = info.status === WebEngineView.LoadFailedStatus;
                root.answering = true;
                root.noteForOrder(info);
                if (failed)
                    gone = domain !== "" && !settings.errorPageEnabled;
                else if (info.status === WebEngineView.LoadSucceededStatus)
                    gone = false;
                refreshBackground();
                root.view.onLoadingChanged(info.status, info.url.toString(),
                                           failed && domain === "" ? "internal" : domain,
                                           failed ? root.describeFailure(domain, info) : "",
                                           info.errorCode);
            }

            // A load starts at a progress of 10 %.
            onLoadProgressChanged: {
                if (loading && loadProgress > 10)
                    gone = false;
            }

            onJavaScriptConsoleMessage: (level, message, lineNumber, sourceID) =>
                root.javaScriptConsoleMessage(
                    level, root.view.shortened(message, root.longestMessage, root.longestMessage),
                    lineNumber, root.view.shortened(sourceID))

            onRenderProcessTerminated: (status, exitCode) => {
                root.answering = false;
                if (root.heldUp) {
                    Qt.callLater(root.takeUpOrder);
                    return;
                }
                root.order = null;
                const text = `The page's process ended unexpectedly (exit code ${exitCode}); reload restores the page`;
                root.view.onLoadingChanged(WebEngineView.LoadFailedStatus, page.url.toString(),
                                           "process", text, exitCode);
                root.javaScriptConsoleMessage(2, text, 0, page.url.toString());
            }
        }
    }

    Text {
        anchors.fill: parent
        anchors.margins: parent.height / 12
        visible: root.undrawable
        text: "This page cannot be displayed on this GPU. See the log for details."
        color: "#f2b8a0"
        style: Text.Outline
        styleColor: "#40100a"
        font.pixelSize: Math.max(14, parent.height / 28)
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    PageExtras {
        id: extras

        anchors.fill: parent
        page: root.page
        view: root.view
        onWindowRequested: address => root.openWindow(address)
        onStayed: {
            if (root.order)
                root.view.onLoadingChanged(WebEngineView.LoadStoppedStatus, root.page.url.toString(),
                                           "internal", "", -3);
            root.order = null;
        }
    }

    // A page that shows a dialog does not respond, which does not count as hanging. But a dialog
    // must not delay a navigation request, except the dialog that asks whether to leave the page.
    Binding {
        target: root.watch
        property: "active"
        value: root.answering && !extras.leaving && (extras.dialog === null || root.order !== null)
    }
}
