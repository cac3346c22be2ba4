pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic

/*!
    A button on the cards that are shown above a page. Enter and Space press the button with the
    focus.
*/
Button {
    id: button

    required property real em
    // The default button, which Enter presses.
    property bool primary
    // A less prominent button.
    property bool quiet

    // Whether Enter has caused the click.
    property bool enterHeld

    readonly property color base: primary ? "#7fd6d0" : quiet ? "#142d4e" : "#1c3a5c"

    function enter(): void {
        button.enterHeld = true;
        button.click();
        button.enterHeld = false;
    }

    implicitWidth: Math.max(em * 5.5, implicitContentWidth + em * 2)
    implicitHeight: em * 2.2
    padding: 0
    font.pixelSize: em
    opacity: enabled ? 1 : 0.4

    Keys.onReturnPressed: button.enter()
    Keys.onEnterPressed: button.enter()

    contentItem: Text {
        text: button.text
        textFormat: Text.PlainText
        color: button.primary ? "#071327" : "#f6efdd"
        font: button.font
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    background: Rectangle {
        radius: height / 2
        color: button.down ? Qt.darker(button.base, 1.25)
            : button.hovered ? Qt.lighter(button.base, 1.12) : button.base
        border.width: button.activeFocus ? Math.max(2, button.em * 0.14) : 0
        border.color: "#f6efdd"

        Behavior on color { ColorAnimation { duration: 90 } }
    }
}
