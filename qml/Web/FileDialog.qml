pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Qt.labs.folderlistmodel
import QtWebEngine
import Web // qmllint disable unused-imports

/*! Lets the user choose files or a folder for a page, or a place to save a file. */
DialogCard {
    id: dialog

    required property FileDialogRequest request

    readonly property bool saves: request.mode === FileDialogRequest.FileModeSave
    readonly property bool several: request.mode === FileDialogRequest.FileModeOpenMultiple
    readonly property bool takesFolder: request.mode === FileDialogRequest.FileModeUploadFolder
    // The path of the displayed folder: at first, the working directory.
    property string path
    // False while the model still lists the previous folder: it reads on another thread. Keys must
    // not act on old entries.
    property bool listed
    // False at first: the second click of the double click that opened this dialog may still
    // follow.
    property bool settled
    // The paths of the selected files.
    property list<string> marked

    // "file:///C:/x" has a slash before the drive letter; the path has none.
    function toPath(address: url): string {
        return decodeURIComponent(address.toString().replace(/^file:\/\/(\/(?=[A-Za-z]:))?/, ""));
    }

    // The model decodes the path twice, so special characters are encoded twice.
    function toUrl(path: string): url {
        return "file://" + (path.startsWith("/") ? "" : "/")
            + path.replace(/[%#?]/g, encodeURIComponent).split("/").map(encodeURIComponent).join("/");
    }

    function open(path: string): void {
        dialog.marked = [];
        dialog.path = path;
        // The model does not list its current folder again.
        const before = model.folder.toString();
        model.folder = dialog.toUrl(path);
        dialog.listed = dialog.listed && model.folder.toString() === before;
        list.currentIndex = -1;
    }

    function goUp(): void {
        const parent = dialog.path.replace(/\/+[^\/]*\/*$/, "");
        dialog.open(parent === "" || parent.endsWith(":") ? parent + "/" : parent);
    }

    function mark(path: string): void {
        const others = dialog.several ? dialog.marked.filter(other => other !== path) : [];
        const remove = dialog.several && dialog.marked.includes(path);
        dialog.marked = remove ? others : [...others, path];
        if (dialog.saves)
            fileName.text = path.replace(/^.*\//, "");
    }

    // The action of a click or Space on an entry.
    function touch(index: int): void {
        list.currentIndex = index;
        if (index >= 0 && !model.isFolder(index))
            dialog.mark(model.get(index, "filePath"));
    }

    function enterEntry(): void {
        dialog.enterHeld = true;
        dialog.choose(list.currentIndex);
    }

    // The action of a double click or Enter on an entry.
    function choose(index: int): void {
        if (index < 0) {
            dialog.enter();
        } else if (model.isFolder(index)) {
            dialog.open(model.get(index, "filePath"));
        } else {
            if (!dialog.marked.includes(model.get(index, "filePath")))
                dialog.touch(index);
            dialog.accept();
        }
    }

    function choice(): list<string> {
        if (dialog.takesFolder)
            return [dialog.path];
        if (dialog.saves)
            return [dialog.path.replace(/\/$/, "") + "/" + fileName.text];
        return dialog.marked;
    }

    title: saves ? qsTr("Save a file") : takesFolder ? qsTr("Choose a folder")
        : several ? qsTr("Choose files") : qsTr("Choose a file")
    preferredWidth: em * 36
    acceptText: saves ? qsTr("Save") : takesFolder ? qsTr("Choose this folder") : qsTr("Open")
    acceptable: takesFolder ? settled : (saves ? /^[^\/\\]+$/.test(fileName.text) : marked.length > 0)
    // Only the button accepts a whole folder: the user may hold Enter, or press it once too often.
    acceptsEnter: !takesFolder
    firstFocus: saves ? fileName : list

    onAccepted: dialog.request.dialogAccept(dialog.choice())
    onRejected: dialog.request.dialogReject()

    Timer {
        interval: 500
        running: true
        onTriggered: dialog.settled = true
    }

    FolderListModel {
        id: model

        showDirsFirst: true
        showFiles: !dialog.takesFolder
        showHidden: false
        onStatusChanged: {
            if (status !== FolderListModel.Ready)
                return;
            dialog.listed = true;
            list.currentIndex = -1;
        }
        Component.onCompleted: dialog.path = dialog.toPath(folder)
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: dialog.em * 0.5

        CardButton {
            Layout.preferredWidth: dialog.em * 2.6
            em: dialog.em
            text: "↑"
            onClicked: dialog.goUp()
        }

        CardField {
            id: address

            Layout.fillWidth: true
            em: dialog.em
            text: dialog.path
            onActiveFocusChanged: {
                if (activeFocus)
                    selectAll();
            }
            Keys.onReturnPressed: dialog.open(text)
            Keys.onEnterPressed: dialog.open(text)
        }
    }

    Rectangle {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.preferredHeight: dialog.em * 16
        Layout.minimumHeight: dialog.em * 4
        radius: dialog.em * 0.5
        color: "#071327"
        border.width: list.activeFocus ? Math.max(1, dialog.em * 0.1) : 1
        border.color: list.activeFocus ? "#7fd6d0" : "#3b618a"

        ListView {
            id: list

            anchors.fill: parent
            anchors.margins: dialog.em * 0.3
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            currentIndex: -1
            highlightMoveDuration: 0
            keyNavigationEnabled: true
            model: dialog.listed ? model : null

            ScrollBar.vertical: ScrollBar {}

            Keys.onReturnPressed: dialog.enterEntry()
            Keys.onEnterPressed: dialog.enterEntry()
            Keys.onSpacePressed: dialog.touch(list.currentIndex)
            Keys.onPressed: event => {
                event.accepted = event.key === Qt.Key_Backspace;
                if (event.accepted)
                    dialog.goUp();
            }

            delegate: Rectangle {
                id: entry

                required property int index
                required property string fileName
                required property string filePath
                required property bool fileIsDir

                readonly property bool marked: dialog.marked.includes(filePath)

                width: ListView.view?.width ?? 0
                height: dialog.em * 2
                radius: dialog.em * 0.4
                color: marked ? "#2d6482" : pointer.hovered ? "#173152" : "transparent"
                border.width: ListView.isCurrentItem && list.activeFocus ? 1 : 0
                border.color: "#7fd6d0"

                Text {
                    anchors.fill: parent
                    anchors.leftMargin: dialog.em * 0.7
                    anchors.rightMargin: dialog.em * 0.7
                    text: entry.fileIsDir ? entry.fileName + "/" : entry.fileName
                    textFormat: Text.PlainText
                    color: entry.fileIsDir ? "#7fd6d0" : "#f6efdd"
                    font.pixelSize: dialog.em
                    elide: Text.ElideMiddle
                    verticalAlignment: Text.AlignVCenter
                }

                HoverHandler { id: pointer }

                TapHandler {
                    onTapped: {
                        list.forceActiveFocus();
                        if (tapCount === 2)
                            dialog.choose(entry.index);
                        else
                            dialog.touch(entry.index);
                    }
                }
            }
        }

        Text {
            anchors.centerIn: parent
            visible: list.count === 0 && model.status === FolderListModel.Ready
            text: qsTr("Nothing here")
            color: "#7f9cb8"
            font.pixelSize: dialog.em
        }
    }

    CardField {
        id: fileName

        Layout.fillWidth: true
        em: dialog.em
        visible: dialog.saves
        placeholderText: qsTr("File name")
        text: dialog.view.shortened(dialog.request.defaultFileName).replace(/^.*[\/\\]/, "")
    }
}
