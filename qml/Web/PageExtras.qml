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

    function log(text: string): void {
        console.warn(`${extras.view.objectName}: ${text}`);
    }

    function refuse(origin: url, what: string): void {
        extras.log(`${origin} asked for ${what}; refused`);
    }

    // --- dialogs ---------------------------------------------------------------------------------

    function ask(component: Component, request: QtObject): void {
        extras.waiting.push({ component: component, request: request });
        if (extras.waiting.length === 1)
            extras.showNext();
    }

    function showNext(): void {
        menu.close(WebEngineView.NoWebAction);
        tip.visible = false;
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

    // Rejects all that a page which is gone has asked.
    function dismiss(): void {
        menu.close(WebEngineView.NoWebAction);
        tip.visible = false;
        const orphans = extras.waiting.splice(1);
        extras.dialog?.reject();
        orphans.forEach(orphan => orphan.request.dialogReject());
    }

    // Those that are not shown yet; the one that is shown rejects its own.
    Component.onDestruction: extras.waiting.splice(1).forEach(left => left.request.dialogReject())

    Component {
        id: pageDialog

        PageDialog {
            anchors.fill: parent
            view: extras.view
            em: extras.em
        }
    }

    Component {
        id: credentialsDialog

        CredentialsDialog {
            anchors.fill: parent
            view: extras.view
            em: extras.em
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
            extras.dialogAnswered();
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
            extras.ask(pageDialog, request);
        }

        function onAuthenticationDialogRequested(request: AuthenticationDialogRequest): void {
            request.accepted = true;
            extras.ask(credentialsDialog, request);
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
        }

        function onUrlChanged(): void {
            extras.dismiss();
        }

        function onRenderProcessTerminated(): void {
            extras.dismiss();
        }

        // There is one window, so links into new ones open in it. The engine asks the navigation
        // handler about that as about any other navigation.
        function onNewWindowRequested(request: WebEngineNewWindowRequest): void {
            const address = request.requestedUrl.toString();
            // A script would run in the page that is open, whatever frame it comes from.
            if (address !== "" && !/^(about|javascript):/i.test(address))
                extras.page.url = request.requestedUrl;
        }

        function onWindowCloseRequested(): void {
            extras.log("the page asked to be closed; ignored, for the view belongs to the host");
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
            extras.log(`the certificate of ${error.url} is not trusted, so it is not loaded: `
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
            extras.log(`${request.relyingPartyId} asked for a security key; refused`);
        }

        function onQuotaRequested(request: webEngineQuotaRequest): void {
            request.reject();
        }

        function onPrintRequested(): void {
            extras.log("the page asked to be printed; ignored, for there is nothing to print to");
        }

        function onPrintRequestedByFrame(): void {
            extras.log("a frame of the page asked to be printed; ignored, for there is nothing to print to");
        }
    }
}
