pragma ComponentBehavior: Bound

import QtQuick
import QtWebEngine

/*!
    The context menu of a page: navigation in the history, and editing where the page has editable
    content. It closes when the user chooses an entry, presses Escape, or presses outside it.
*/
FocusScope {
    id: menu

    required property WebEngineView page
    required property real em

    property point position
    property list<var> entries

    // Emitted when the menu has closed, before `action` is triggered; NoWebAction for none.
    signal closed(action: int)

    function entry(text: string, action: int, enabled: bool): var {
        return { text: text, action: action, enabled: enabled };
    }

    function separator(): var {
        return { text: "", action: WebEngineView.NoWebAction, enabled: false };
    }

    function open(request: ContextMenuRequest): void {
        const edits = request.editFlags;
        const editable = request.isContentEditable;
        const list = [];
        if (editable)
            list.push(menu.entry(qsTr("Cut"), WebEngineView.Cut, edits & ContextMenuRequest.CanCut));
        if (editable || request.selectedText !== "")
            list.push(menu.entry(qsTr("Copy"), WebEngineView.Copy, edits & ContextMenuRequest.CanCopy));
        if (editable)
            list.push(menu.entry(qsTr("Paste"), WebEngineView.Paste, edits & ContextMenuRequest.CanPaste));
        if (list.length === 0) {
            list.push(menu.entry(qsTr("Back"), WebEngineView.Back, menu.page.canGoBack));
            list.push(menu.entry(qsTr("Forward"), WebEngineView.Forward, menu.page.canGoForward));
            list.push(menu.entry(qsTr("Reload"), WebEngineView.Reload, true));
        }
        if (edits & ContextMenuRequest.CanSelectAll) {
            list.push(menu.separator());
            list.push(menu.entry(qsTr("Select all"), WebEngineView.SelectAll, true));
        }
        menu.entries = list;
        menu.position = Qt.point(request.position.x, request.position.y);
        choices.current = -1;
        menu.visible = true;
        menu.forceActiveFocus();
    }

    function close(action: int): void {
        if (!menu.visible)
            return;
        menu.visible = false;
        menu.closed(action);
    }

    function step(by: int): void {
        const count = menu.entries.length;
        let next = choices.current < 0 && by < 0 ? 0 : choices.current;
        for (let tries = 0; tries < count; ++tries) {
            next = (next + by + count) % count;
            if (menu.entries[next].enabled)
                break;
        }
        choices.current = next;
    }

    visible: false

    Keys.onPressed: event => {
        event.accepted = true;
        if (event.key === Qt.Key_Escape)
            menu.close(WebEngineView.NoWebAction);
        else if (event.key === Qt.Key_Down || event.key === Qt.Key_Tab)
            menu.step(1);
        else if (event.key === Qt.Key_Up || event.key === Qt.Key_Backtab)
            menu.step(-1);
        else if ([Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key))
            menu.close(menu.entries[choices.current]?.action ?? WebEngineView.NoWebAction);
    }

    // A press outside the menu only closes it.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPressed: menu.close(WebEngineView.NoWebAction)
        onWheel: wheel => wheel.accepted = true
    }

    Rectangle {
        x: Math.max(0, Math.min(menu.position.x, menu.width - width))
        y: Math.max(0, Math.min(menu.position.y, menu.height - height))
        width: choices.width + menu.em * 0.8
        height: choices.height + menu.em * 0.8
        radius: menu.em * 0.7
        color: "#0f2340"
        border.width: Math.max(1, menu.em * 0.08)
        border.color: "#2b4c70"

        // The gaps between the entries belong to the menu as well.
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
        }

        Column {
            id: choices

            property int current: -1

            anchors.centerIn: parent
            width: menu.em * 10

            Repeater {
                model: menu.entries

                Item {
                    id: choice

                    required property int index
                    required property var modelData

                    readonly property bool separates: modelData.text === ""

                    width: choices.width
                    height: menu.em * (separates ? 0.7 : 2)

                    Rectangle {
                        anchors.centerIn: parent
                        visible: choice.separates
                        width: parent.width - menu.em
                        height: Math.max(1, menu.em * 0.06)
                        color: "#2b4c70"
                    }

                    Rectangle {
                        anchors.fill: parent
                        visible: choices.current === choice.index
                        radius: menu.em * 0.45
                        color: "#24507a"
                    }

                    Text {
                        anchors.fill: parent
                        anchors.leftMargin: menu.em * 0.8
                        text: choice.modelData.text
                        color: "#f6efdd"
                        opacity: choice.modelData.enabled ? 1 : 0.4
                        font.pixelSize: menu.em
                        verticalAlignment: Text.AlignVCenter
                    }

                    MouseArea {
                        anchors.fill: parent
                        enabled: choice.modelData.enabled
                        hoverEnabled: true
                        onPositionChanged: choices.current = choice.index
                        onClicked: menu.close(choice.modelData.action)
                    }
                }
            }
        }
    }
}
