pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    What a browser shows besides the page, and its answers to what a page asks of the world: dialogs,
    the menu of the right click, tool tips, permissions, windows. It lies over the page and takes no
    input but while it shows something.

    One dialog is shown at a time, in the order in which pages ask. Each request is answered exactly
    once; those of a page that is gone are rejected.
*/
Item {
    id: extras

    // May be null as long as there is none.
    required property WebEngineView page
    // The view that messages name, and that shortens texts.
    required property var view

    // As large as the page's text, as long as a dialog has the room for it.
    readonly property real em: Math.max(9, Math.min(14 * (page?.zoomFactor ?? 1), width / 22,
                                                    height / 15))
    // Dialogs to come, as { component, request }; the first one is shown as `dialog`.
    property var waiting: []
    property DialogCard dialog
    // The user is asked whether to leave the page.
    readonly property bool leaving: (dialog as PageDialog)?.leaving ?? false
    // It is not the user who rejects the dialog.
    property bool withdrawing
    // Of one site, until the host or the page goes on to another: the dialogs that it has shown, whether
    // the user wants no more of them, the windows that its scripts have opened, and the lines that it has
    // written to the log, by their kind.
    property int shown
    property bool silent
    property int windows
    property var lines: ({})
    property string site
    // The next page that is there starts from nothing: it is of another site, or the host has wanted it.
    property bool forgiving

    readonly property int mostWaiting: 20
    readonly property int mostWindows: 10
    readonly property int mostLines: 10
    readonly property bool opensTooManyWindows: windows >= mostWindows

    // Where the user has last chosen a file.
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

    // The user does not leave the page.
    signal stayed()
    // The page wants a window for an address.
    signal windowRequested(address: string)

    // A page can bring messages without end, and of any length.
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
            extras.log("dialog", `more than ${extras.mostWaiting} dialogs wait; this one is rejected`);
            request.dialogReject();
            return;
        }
        extras.waiting.push({ component: component, request: request });
        if (extras.waiting.length === 1)
            extras.showNext();
    }

    // For what a page can ask without any doing of the user.
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
        // The button that has opened a folder's dialog takes the release of Enter for a press.
        if ((answered as FileDialog)?.enterHeld)
            release.forceActiveFocus();
        else
            extras.page?.forceActiveFocus();
    }

    // Takes back the question that is shown.
    function withdraw(): void {
        extras.withdrawing = true;
        extras.dialog?.reject();
        extras.withdrawing = false;
    }

    // Rejects all that a page which is gone has asked.
    function dismiss(): void {
        menu.close(WebEngineView.NoWebAction);
        tip.visible = false;
        const orphans = extras.waiting.splice(1);
        extras.withdraw();
        orphans.forEach(orphan => orphan.request.dialogReject());
        refusal.rejectAll();
    }

    // A page that asks in a loop is answered at a pace that leaves the Qt thread to others.
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

    // Those that are not shown yet; the one that is shown rejects its own.
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

    // The Tab key stays with the dialog, and the mouse does not get to the page either.
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

    // The engine takes the place of tool tips from the system's mouse, which is not the host's. At an
    // item that has the page in it, for one beside the page would keep the mouse from it.
    HoverHandler {
        id: mouse

        parent: extras.parent
    }

    PageToolTip {
        id: tip

        em: extras.em
    }

    // The engine's own list of suggestions (`<datalist>`) is a popup of Controls, whose rows are too low
    // for the padding of this style: without it they have room for their text.
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
        // Popups that are there already.
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
            // Whoever wants no more of a page may leave it.
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

        // A page that begins to load takes the old one's questions with it.
        function onLoadingChanged(info: webEngineLoadingInfo): void {
            if (info.status === WebEngineView.LoadStartedStatus)
                extras.dismiss();
            else if (info.status === WebEngineView.LoadSucceededStatus)
                extras.forgive();
        }

        // A loading begins at 10 %; more is the new page's.
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

        // There is one window, so links into new ones open in it.
        function onNewWindowRequested(request: WebEngineNewWindowRequest): void {
            if (!request.userInitiated && ++extras.windows === extras.mostWindows)
                extras.log("window", `the page has opened ${extras.mostWindows} windows by itself, and may `
                           + "open no more");
            const address = request.requestedUrl.toString();
            // What a frame has written itself would become the page, or run in it.
            if (address !== "" && !/^(about|blob|data|filesystem|javascript):/i.test(address))
                extras.windowRequested(address);
        }

        function onWindowCloseRequested(): void {
            extras.log("close", "the page asked to be closed; ignored, for the view belongs to the host");
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
            extras.log("certificate", `the certificate of ${error.url} is not trusted, so it is not loaded: `
                       + error.description);
        }

        function onSelectClientCertificate(selection: WebEngineClientCertificateSelection): void {
            selection.selectNone();
            extras.refuse(selection.host, "a certificate of the user");
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
            extras.log("print", "the page asked to be printed; ignored, for there is nothing to print to");
        }

        function onPrintRequestedByFrame(): void {
            extras.log("print",
                       "a frame of the page asked to be printed; ignored, for there is nothing to print to");
        }
    }

    // The profile is that of all views.
    Connections {
        target: extras.page?.profile ?? null

        function onDownloadRequested(download: WebEngineDownloadRequest): void {
            if (download.view === extras.page)
                extras.log("download", `"${download.suggestedFileName}" is a download; ignored, for views `
                           + `save no files: ${download.url}`);
        }
    }
}
