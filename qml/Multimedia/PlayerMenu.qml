pragma ComponentBehavior: Bound

import QtQuick

/*!
    A list of choices above the button that opens it. It closes when the user chooses an entry,
    presses Escape, or presses outside it.
*/
FocusScope {
    id: menu

    required property real em

    property string title
    property list<string> choices
    property int current: -1
    // The centre of the button, and the edge above which the list is placed.
    property real middle
    property real lowerEdge

    // The button that has opened the menu.
    property string owner
    property int pointed: -1

    signal chosen(owner: string, index: int)
    // The menu no longer needs the keyboard focus.
    signal closed()

    function open(owner: string, title: string, choices: list<string>, current: int,
                  middle: real): void {
        menu.owner = owner;
        menu.title = title;
        menu.choices = choices;
        menu.current = current;
        menu.pointed = current;
        menu.middle = middle;
        menu.visible = true;
        menu.forceActiveFocus();
    }

    function close(): void {
        if (!menu.visible)
            return;
        menu.visible = false;
        menu.closed();
    }

    function take(index: int): void {
        if (index < 0 || index >= menu.choices.length)
            return;
        menu.close();
        menu.chosen(menu.owner, index);
    }

    function move(by: int): void {
        menu.pointed = Math.max(0, Math.min(menu.choices.length - 1, menu.pointed + by));
        list.positionViewAtIndex(menu.pointed, ListView.Contain);
    }

    visible: false

    Keys.onPressed: event => {
        event.accepted = true;
        if (event.key === Qt.Key_Escape)
            menu.close();
        else if (event.key === Qt.Key_Down || event.key === Qt.Key_Tab)
            menu.move(1);
        else if (event.key === Qt.Key_Up || event.key === Qt.Key_Backtab)
            menu.move(-1);
        else if ([Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key))
            menu.take(menu.pointed);
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPressed: menu.close()
        onWheel: wheel => wheel.accepted = true
    }

    Rectangle {
        id: sheet

        x: Math.max(menu.em * 0.5, Math.min(menu.width - width - menu.em * 0.5, menu.middle - width / 2))
        y: menu.lowerEdge - height
        width: Math.min(menu.width - menu.em, menu.em * 13)
        height: Math.min(menu.lowerEdge - menu.em * 0.5,
                         heading.height + list.contentHeight + menu.em * 1.4)
        radius: menu.em * 0.7
        color: "#f00f2340"
        border.width: Math.max(1, menu.em * 0.08)
        border.color: "#2b4c70"

        // The gaps between the entries belong to the menu as well.
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
        }

        Text {
            id: heading

            x: menu.em * 1.2
            y: menu.em * 0.6
            width: parent.width - 2 * x
            text: menu.title
            textFormat: Text.PlainText
            color: "#a9c6dd"
            font.pixelSize: menu.em * 0.85
            elide: Text.ElideRight
        }

        ListView {
            id: list

            anchors.fill: parent
            anchors.margins: menu.em * 0.4
            anchors.topMargin: heading.y + heading.height + menu.em * 0.4
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: menu.choices

            delegate: Item {
                id: choice

                required property int index
                required property string modelData

                width: list.width
                height: menu.em * 2

                Rectangle {
                    anchors.fill: parent
                    radius: menu.em * 0.45
                    color: "#24507a"
                    visible: menu.pointed === choice.index
                }

                Image {
                    anchors.verticalCenter: parent.verticalCenter
                    x: menu.em * 0.5
                    width: menu.em * 1.1
                    height: width
                    sourceSize: Qt.size(width, width)
                    source: "qrc:/Multimedia/assets/images/check.svg"
                    cache: false
                    visible: menu.current === choice.index
                }

                Text {
                    anchors.fill: parent
                    anchors.leftMargin: menu.em * 2
                    anchors.rightMargin: menu.em * 0.6
                    text: choice.modelData
                    textFormat: Text.PlainText
                    color: "#f6efdd"
                    font.pixelSize: menu.em
                    elide: Text.ElideRight
                    verticalAlignment: Text.AlignVCenter
                }

                MouseArea {
                    anchors.fill: parent
                    hoverEnabled: true
                    onPositionChanged: menu.pointed = choice.index
                    onClicked: menu.take(choice.index)
                }
            }
        }
    }
}
