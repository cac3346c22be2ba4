pragma ComponentBehavior: Bound

import QtQuick
import QtWebChannel
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    The scene of a web view: the browser item, bound to what the host sets on the view.

    The browser item is made when the first frame has been drawn. Its engine looks into the Vulkan loader
    on a thread of its own, which must not meet the window's graphics while those are being set up.
*/
Item {
    id: root

    property WebChannel webChannel: WebChannel {}
    // The browser item's: the view leads its pages from there to the other.
    readonly property WebChannel gate: WebChannel {}

    readonly property var view: ctx // qmllint disable unqualified
    readonly property color background: view.backgroundColor
    // What the engine can draw: it does not take colours that are partly transparent.
    readonly property color opaqueBackground: background.a === 1 ? background : "transparent"
    readonly property WebEngineProfile profile: customWebProfile // qmllint disable unqualified
    // What lets the host's device take pictures that were made on graphics hardware.
    readonly property string memoryExtension: webMemoryExtension // qmllint disable unqualified
    // The device can take what the engine makes, as far as is known by now.
    readonly property bool fits: webDeviceFits // qmllint disable unqualified
    readonly property list<string> settingNames: webSettings // qmllint disable unqualified
    // An engine after that of Qt 6.8. It is late with a page's own scripts where the page comes of a text,
    // and can lose what it is ordered while it is at a blank page.
    readonly property bool isNew: webEngineIsNew // qmllint disable unqualified
    readonly property var watch: pageWatch // qmllint disable unqualified
    readonly property WebEngineView page: started ? browser.item as WebEngineView : null

    // It follows the view.
    property bool started
    // Found out: the engine's pictures come in ordinary memory.
    property bool engineDrawsInMemory
    // The host's device cannot take the pictures that the engine makes.
    property bool undrawable

    // What was asked of the page before it was there; the last of it, where no page ever comes.
    property var waiting: []
    readonly property int mostWaiting: 1000
    // Where the host has sent the page last, as long as nothing has come of it.
    property var order: null
    // It may have to be given once more.
    property bool again
    // The blank page that was there before has nothing to do with it.
    property bool orderStarted
    // There is a process that can be asked for a sign of life.
    property bool answering
    // The order for the sake of which it has been ended.
    property var heldUp: null
    // What the page wants a new window for.
    property string windowAddress

    // What pages do by themselves.
    readonly property list<string> ofPages: ["link_clicked", "form_submitted", "redirect"]
    readonly property var navigationTypes: ({
        [WebEngineNavigationRequest.LinkClickedNavigation]: "link_clicked",
        [WebEngineNavigationRequest.TypedNavigation]: "typed",
        [WebEngineNavigationRequest.FormSubmittedNavigation]: "form_submitted",
        [WebEngineNavigationRequest.BackForwardNavigation]: "back_forward",
        [WebEngineNavigationRequest.ReloadNavigation]: "reload",
        [WebEngineNavigationRequest.RedirectNavigation]: "redirect"
    })
    // They run before any script of a page does. The engine takes them once the profile is set.
    readonly property var scripts: [
        {
            name: "objects",
            sourceUrl: "qrc:/Web/assets/test.min.js",
            injectionPoint: WebEngineScript.DocumentCreation,
            worldId: WebEngineScript.MainWorld
        },
        pageScript("drag_and_drop", WebEngineScript.MainWorld),
        // Apart from the page's own, these run where the settings forbid it to run scripts.
        pageScript("native_drag", WebEngineScript.ApplicationWorld),
        pageScript("full_screen", WebEngineScript.ApplicationWorld)
    ]

    // What the engine opens by itself.
    readonly property var ownSchemes: new RegExp("^(about|blob|chrome|chrome-error|chrome-extension|data|devtools|"
        + "file|filesystem|ftp|https?|javascript|qrc|res|view-source|wss?):", "i")

    // In characters; of a longer message the host gets the beginning.
    readonly property int longestMessage: 65536

    // By the engine's numbers.
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

    // Sends the page elsewhere, and does not let it hold that up.
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

    // The question whether to leave the page is about an older order. The engine can be given the new
    // one when the page goes on; given too early, it is lost with the older one, and given once more.
    function askAgain(page: WebEngineView): void {
        const work = order;
        again = true;
        extras.withdraw();
        page.runJavaScript("0", WebEngineScript.ApplicationWorld, () => {
            if (order === work)
                work(page);
        });
    }

    // The page has had the order for a while and goes nowhere.
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
        console.warn(`${view.objectName}: the page has not answered and is ended, so that the view can go on`);
        heldUp = order;
        order = null;
        watch.end_process(page.renderProcessPid);
    }

    // Once: what hangs after that is not what has held the view up.
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

    // The host is asked first, of what is refused afterwards too.
    function mayGo(request: var): bool {
        const type = typeOf(request);
        const url = request.url.toString();
        return view.navigation_handler(url, type) && !isForOthers(url)
            && !(request.isMainFrame && leavesForDisk(url, type));
    }

    // The engine would have the system open it, with a window of its own. Only a host that has chosen a
    // policy wants that.
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

    // Only the host takes the view to files, and pages that are such themselves.
    function leavesForDisk(url: string, type: string): bool {
        const onDisk = /^(file|qrc):/i;
        if (!ofPages.includes(type) && type !== "new_window" || !onDisk.test(url)
                || onDisk.test(page.url.toString()))
            return false;
        extras.log("disk", "the page wants to go to a file of the disk; refused");
        return true;
    }

    // A script goes there, so that the page and not the host is who begins it, with no rights but its own.
    function openWindow(address: string): void {
        windowAddress = address;
        page.runJavaScript(`location.assign(${JSON.stringify(address)})`, WebEngineScript.ApplicationWorld);
    }

    function start(): void {
        const page = browser.item as WebEngineView;
        const userScripts = (isNew ? profile : page).userScripts; // qmllint disable
        if (userScripts.collection.length === 0)
            userScripts.collection = scripts;
        // All settings of the view go by the engine's names, but for one letter of one.
        for (const name of settingNames) {
            const engineName = name.replace("fullscreen", "fullScreen");
            page.settings[engineName] = Qt.binding(() => view[name]);
        }
        page.settings.javascriptCanOpenWindows =
            Qt.binding(() => view.javascriptCanOpenWindows && !extras.opensTooManyWindows);
        // With any other policy the engine would not ask about URLs for other programs, and some numbers
        // of hosts are none of its own.
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

    // With the next frame there is a new one.
    function close_page(): void {
        extras.dismiss();
        answering = false;
        order = heldUp = null;
        started = false;
        probe.active = false;
        browser.active = false;
    }

    function decide(engineDrawsOnHardware: bool): void {
        undrawable = engineDrawsOnHardware;
        if (undrawable)
            waiting = [];
        engineDrawsInMemory = !engineDrawsOnHardware;
        if (engineDrawsOnHardware)
            console.warn(`${view.objectName}: the web engine draws on the graphics hardware, but the host's `
                         + `Vulkan device cannot take its pictures. Create the device with ${memoryExtension}, `
                         + "or set GPU_DISABLED before the start.");
        else
            browser.active = true;
    }

    // The engine has a text for everything, but for what a server answers it is a piece of a page, and
    // it has none for the one failure without a domain: HTML of the host that is too long.
    function describeFailure(domain: string, info: webEngineLoadingInfo): string {
        if (domain === "http_status")
            return `The server has answered with status ${info.errorCode}`;
        return domain === "" ? "The HTML is longer than the engine takes" : info.errorString;
    }

    // A relative URL would be taken as relative to this file.
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

    // A device without the extension is good enough where the engine draws on the processor, and fatal
    // where it does not. Only there it has WebGL, and a page that is in no window can tell.
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

    // The engine itself draws no colour that is partly transparent.
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

            // Nothing has come of the last loading. The engine keeps the page that was there before; it
            // is hidden until the first piece of the next one is there.
            property bool gone
            // The engine goes on drawing the background of the page before, behind one that has none, until
            // it is given another colour.
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

            // A loading begins at 10 %.
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
                const text = `The page's process has ended (exit code ${exitCode}); reload brings it back`;
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
        text: "This page cannot be drawn on this graphics device. The log tells the remedy."
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

    // A page that asks the user stands still, which is no hanging; but it may not hold an order up by it,
    // unless it asks whether it is to be left.
    Binding {
        target: root.watch
        property: "active"
        value: root.answering && !extras.leaving && (extras.dialog === null || root.order !== null)
    }
}
