pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    Everything that a browser shows besides the page, and its answers to the page's requests:
    dialogs, the context menu, tool tips, permissions, windows. It lies over the page and accepts
    input only while it shows something.

    It shows one dialog at a time, in the order of the requests. It answers each request exactly
    once, and rejects those of a page that is gone.
*/
Item {
    id: extras

    // Null while there is no page.
    required property WebEngineView page
    // The view: messages contain its name, and it shortens texts.
    required property var view

    // As large as the page's text, if a dialog has enough room for it.
    readonly property real em: Math.max(9, Math.min(14 * (page?.zoomFactor ?? 1), width / 22,
                                                    height / 15))
    // The requested dialogs, as { component, request }; the first one is shown as `dialog`.
    property var waiting: []
    property DialogCard dialog
    // The current dialog asks whether to leave the page.
    readonly property bool leaving: (dialog as PageDialog)?.leaving ?? false
    // The dialog is being rejected by the scene, not by the user.
    property bool withdrawing
    // Per site, until the host or the page navigates to another: the number of dialogs shown,
    // whether the user has suppressed dialogs, the number of windows opened by scripts, and the
    // number of log lines of each kind.
    property int shown
    property bool silent
    property int windows
    property var lines: ({})
    property string site
    // The next page resets these values: it belongs to another site, or the host has requested it.
    property bool forgiving

    readonly property int mostWaiting: 20
    readonly property int mostWindows: 10
    readonly property int mostLines: 10
    readonly property bool opensTooManyWindows: windows >= mostWindows

    // The folder in which the user last chose a file.
    property string lastFolder

    readonly property var permissionNames: ({
        [WebEnginePermission.PermissionType.MediaAudioCapture]: "the microphone",
        [WebEnginePermission.PermissionType.MediaVideoCapture]: "the camera",
        [WebEnginePermission.PermissionType.MediaAudioVideoCapture]: "the microphone and the camera",
        [WebEnginePermission.PermissionType.DesktopVideoCapture]: "the screen",
        [WebEnginePermission.PermissionType.DesktopAudioVideoCapture]: "the screen and its sound",
        [WebEnginePermission.PermissionType.MouseLock]: "the mouse",
        [WebEnginePermission.PermissionType.Notifications]: "notifications",
        [WebEnginePermission.PermissionType.Geolocation]: "the location",
        [WebEnginePermission.PermissionType.ClipboardReadWrite]: "the clipboard",
        [WebEnginePermission.PermissionType.LocalFontsAccess]: "the fonts"
    })

    // The user stays on the page.
    signal stayed()
    // The page requests a window for an address.
    signal windowRequested(address: string)

    // A page can cause any number of messages, of any length.
    function log(kind: string, text: string): void {
        const count = (extras.lines[kind] ?? 0) + 1;
        extras.lines[kind] = count;
        if (count > extras.mostLines)
            return;
        const line = extras.view.shortened(text, 500, 1);
        const last = count === extras.mostLines ? " (no more messages of this kind for this page)" : "";
        console.warn(`${extras.view.objectName}: ${line}${last}`);
    }

    function refuse(origin: url, what: string): void {
        extras.log("permission", `${origin} asked for ${what}; refused`);
    }

    function forgive(): void {
        if (!extras.forgiving)
            return;
        extras.forgiving = false;
        extras.shown = 0;
        extras.silent = false;
        extras.windows = 0;
        extras.lines = {};
    }

    // --- dialogs ---------------------------------------------------------------------------------

    function ask(component: Component, request: var): void {
        if (extras.waiting.length >= extras.mostWaiting) {
            extras.log("dialog", `more than ${extras.mostWaiting} dialogs are waiting; this one is rejected`);
            request.dialogReject();
            return;
        }
        extras.waiting.push({ component: component, request: request });
        if (extras.waiting.length === 1)
            extras.showNext();
    }

    // For requests that a page can make without user interaction.
    function askUnlessSilent(component: Component, request: var): void {
        if (extras.silent)
            refusal.add(request);
        else
            extras.ask(component, request);
    }

    function silence(): void {
        extras.silent = true;
        extras.dismiss();
    }

    function showNext(): void {
        menu.close(WebEngineView.NoWebAction);
        tip.visible = false;
        ++extras.shown;
        const next = extras.waiting[0];
        extras.dialog = next.component.createObject(extras, { request: next.request }) as DialogCard;
    }

    function dialogAnswered(): void {
        const answered = extras.dialog;
        extras.dialog = null;
        extras.waiting.shift();
        if (extras.waiting.length > 0)
            extras.showNext();
        else if (answered.activeFocus)
            extras.giveFocusBack(answered);
        answered.destroy();
    }

    function giveFocusBack(answered: DialogCard): void {
        // The button that opened a folder's dialog would treat the release of Enter as a press.
        if ((answered as FileDialog)?.enterHeld)
            release.forceActiveFocus();
        else
            extras.page?.forceActiveFocus();
    }

    // Closes the current dialog without an answer of the user.
    function withdraw(): void {
        extras.withdrawing = true;
        extras.dialog?.reject();
        extras.withdrawing = false;
    }

    // Rejects all requests of a page that is gone.
    function dismiss(): void {
        menu.close(WebEngineView.NoWebAction);
        tip.visible = false;
        const orphans = extras.waiting.splice(1);
        extras.withdraw();
        orphans.forEach(orphan => orphan.request.dialogReject());
        refusal.rejectAll();
    }

    // A page that requests dialogs in a loop gets its answers at a limited rate, so that the Qt
    // thread can serve others.
    Timer {
        id: refusal

        property var requests: []

        function add(request: QtObject): void {
            refusal.requests.push(request);
            refusal.start();
        }

        function rejectAll(): void {
            refusal.stop();
            refusal.requests.splice(0).forEach(request => request.dialogReject());
        }

        interval: 50
        onTriggered: refusal.rejectAll()
        Component.onDestruction: refusal.rejectAll()
    }

    // Rejects the requests that are not shown yet; the current dialog rejects its own.
    Component.onDestruction: extras.waiting.splice(1).forEach(left => left.request.dialogReject())

    Component {
        id: pageDialog

        PageDialog {
            id: asking

            anchors.fill: parent
            view: extras.view
            em: extras.em
            endable: !asking.leaving && extras.shown > 1
            onEnded: extras.silence()
        }
    }

    Component {
        id: credentialsDialog

        CredentialsDialog {
            anchors.fill: parent
            view: extras.view
            em: extras.em
            endable: extras.shown > 1
            onEnded: extras.silence()
        }
    }

    Component {
        id: colorDialog

        ColorDialog {
            anchors.fill: parent
            view: extras.view
            em: extras.em
        }
    }

    Component {
        id: fileDialog

        FileDialog {
            id: files

            anchors.fill: parent
            view: extras.view
            em: extras.em
            Component.onCompleted: {
                if (extras.lastFolder !== "")
                    files.open(extras.lastFolder);
            }
            onAccepted: extras.lastFolder = files.path
        }
    }

    // Keeps the Tab key and the mouse in the dialog.
    Binding {
        target: extras.page
        property: "enabled"
        value: false
        when: extras.dialog !== null
    }

    Connections {
        target: extras.dialog

        function onAccepted(): void {
            extras.dialogAnswered();
        }

        function onRejected(): void {
            const stays = extras.leaving && !extras.withdrawing;
            extras.dialogAnswered();
            if (stays)
                extras.stayed();
        }
    }

    Item {
        id: release

        Keys.onReleased: extras.page?.forceActiveFocus()
    }

    // --- small things ----------------------------------------------------------------------------

    PageMenu {
        id: menu

        anchors.fill: parent
        page: extras.page
        em: extras.em
        onClosed: action => {
            if (menu.activeFocus)
                extras.page?.forceActiveFocus();
            if (action !== WebEngineView.NoWebAction)
                extras.page?.triggerWebAction(action);
        }
    }

    // The engine positions tool tips at the system's mouse, which is not the view's. The handler
    // belongs to an item that contains the page, because an item beside the page would keep the
    // mouse from it.
    HoverHandler {
        id: mouse

        parent: extras.parent
    }

    PageToolTip {
        id: tip

        em: extras.em
    }

    // The engine's list of suggestions (`<datalist>`) is a popup of Qt Quick Controls. Its rows are
    // too low for the padding of this style; without padding, their text fits.
    function makeRoom(row: var): void {
        if (row.topPadding === undefined)
            return;
        row.padding = 0;
        row.leftPadding = Qt.binding(() => row.height * 0.3);
        row.font.pixelSize = Qt.binding(() => Math.max(1, row.height * 0.65));
    }

    function makeRoomIn(list: ListView): void {
        const makeRoomInAll = () => [...list.contentItem.children].forEach(extras.makeRoom);
        list.contentItem.childrenChanged.connect(makeRoomInAll);
        makeRoomInAll();
    }

    Connections {
        // Popups that are already known.
        property var known: []

        target: extras.Overlay.overlay

        function onChildrenChanged(): void {
            const popups = [...extras.Overlay.overlay.children];
            for (const popup of popups.filter(popup => !known.includes(popup))) {
                for (const content of popup.children) {
                    for (const list of [...content.children].filter(child => child instanceof ListView))
                        extras.makeRoomIn(list);
                }
            }
            known = popups;
        }
    }

    // --- what the page asks ----------------------------------------------------------------------

    Connections {
        target: extras.page

        function onJavaScriptDialogRequested(request: JavaScriptDialogRequest): void {
            request.accepted = true;
            // A user who suppresses a page's dialogs may leave the page.
            if (extras.silent && request.type === JavaScriptDialogRequest.DialogTypeBeforeUnload)
                request.dialogAccept();
            else
                extras.askUnlessSilent(pageDialog, request);
        }

        function onAuthenticationDialogRequested(request: AuthenticationDialogRequest): void {
            request.accepted = true;
            extras.askUnlessSilent(credentialsDialog, request);
        }

        function onColorDialogRequested(request: ColorDialogRequest): void {
            request.accepted = true;
            extras.ask(colorDialog, request);
        }

        function onFileDialogRequested(request: FileDialogRequest): void {
            request.accepted = true;
            extras.ask(fileDialog, request);
        }

        function onContextMenuRequested(request: ContextMenuRequest): void {
            request.accepted = true;
            if (!extras.dialog)
                menu.open(request);
        }

        function onTooltipRequested(request: TooltipRequest): void {
            request.accepted = true;
            if (request.type === TooltipRequest.Show && !extras.dialog && !menu.visible)
                tip.show(extras.view.shortened(request.text),
                         extras.mapFromItem(extras.parent, mouse.point.position));
            else
                tip.visible = false;
        }

        function onTouchSelectionMenuRequested(request: TouchSelectionMenuRequest): void {
            request.accepted = true;
        }

        // A page that starts to load cancels the previous page's requests.
        function onLoadingChanged(info: webEngineLoadingInfo): void {
            if (info.status === WebEngineView.LoadStartedStatus)
                extras.dismiss();
            else if (info.status === WebEngineView.LoadSucceededStatus)
                extras.forgive();
        }

        // A load starts at a progress of 10 %; a higher value belongs to the new page.
        function onLoadProgressChanged(): void {
            if (extras.page.loading && extras.page.loadProgress > 10)
                extras.forgive();
        }

        function onUrlChanged(): void {
            extras.dismiss();
            const site = extras.page.url.toString().match(/^\w+:(\/\/[^\/]*)?/)?.[0] ?? "";
            if (site !== extras.site)
                extras.forgiving = true;
            extras.site = site;
        }

        function onRenderProcessTerminated(): void {
            extras.dismiss();
        }

        // There is only one window, so links into new windows open in it.
        function onNewWindowRequested(request: WebEngineNewWindowRequest): void {
            if (!request.userInitiated && ++extras.windows === extras.mostWindows)
                extras.log("window", `the page has opened ${extras.mostWindows} windows without user interaction `
                           + "and may not open more");
            const address = request.requestedUrl.toString();
            // A document that a frame has written itself would replace the page, or a script would
            // run in it.
            if (address !== "" && !/^(about|blob|data|filesystem|javascript):/i.test(address))
                extras.windowRequested(address);
        }

        function onWindowCloseRequested(): void {
            extras.log("close", "the page asked to be closed; ignored, because the view belongs to the host");
        }

        function onFullScreenRequested(request: fullScreenRequest): void {
            request.accept();
        }

        function onPermissionRequested(permission: webEnginePermission): void {
            const type = permission.permissionType;
            const settings = extras.page.settings;
            const clipboard = type === WebEnginePermission.PermissionType.ClipboardReadWrite
                && settings.javascriptCanAccessClipboard && settings.javascriptCanPaste;
            const screen = settings.screenCaptureEnabled
                && (type === WebEnginePermission.PermissionType.DesktopVideoCapture
                    || type === WebEnginePermission.PermissionType.DesktopAudioVideoCapture);
            if (clipboard || screen) {
                permission.grant();
                return;
            }
            permission.deny();
            extras.refuse(permission.origin, extras.permissionNames[type] ?? "an unknown permission");
        }

        function onDesktopMediaRequested(request: var): void {
            const screens = request.screensModel;
            if (extras.page.settings.screenCaptureEnabled && screens.rowCount() > 0)
                request.selectScreen(screens.index(0, 0));
            else
                request.cancel();
        }

        function onCertificateError(error: webEngineCertificateError): void {
            error.rejectCertificate();
            extras.log("certificate", `the certificate of ${error.url} is not trusted; the request is refused: `
                       + error.description);
        }

        function onSelectClientCertificate(selection: WebEngineClientCertificateSelection): void {
            selection.selectNone();
            extras.refuse(selection.host, "a client certificate");
        }

        function onRegisterProtocolHandlerRequested(request: registerProtocolHandlerRequest): void {
            request.reject();
            extras.refuse(request.origin, `links that begin with "${request.scheme}:"`);
        }

        function onFileSystemAccessRequested(request: webEngineFileSystemAccessRequest): void {
            request.reject();
            extras.refuse(request.origin, `access to ${request.filePath}`);
        }

        function onWebAuthUxRequested(request: WebEngineWebAuthUxRequest): void {
            request.cancel();
            extras.log("permission", `${request.relyingPartyId} asked for a security key; refused`);
        }

        function onQuotaRequested(request: webEngineQuotaRequest): void {
            request.reject();
        }

        function onPrintRequested(): void {
            extras.log("print", "the page asked to be printed; ignored, because views cannot print");
        }

        function onPrintRequestedByFrame(): void {
            extras.log("print",
                       "a frame of the page asked to be printed; ignored, because views cannot print");
        }
    }

    // All views share the profile.
    Connections {
        target: extras.page?.profile ?? null

        function onDownloadRequested(download: WebEngineDownloadRequest): void {
            if (download.view === extras.page)
                extras.log("download", `"${download.suggestedFileName}" is a download; ignored, because views `
                           + `save no files: ${download.url}`);
        }
    }
}
