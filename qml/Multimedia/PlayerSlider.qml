pragma ComponentBehavior: Bound

import QtQuick

/*!
    A line with a handle that clicks and drags move. The owner holds the value: the slider only
    reports the value at the pointer.
*/
Item {
    id: slider

    required property real em
    // From 0 to 1.
    required property real value
    readonly property bool dragging: area.pressed
    readonly property bool hovered: area.containsMouse || area.pressed
    // The value at the pointer, from 0 to 1.
    readonly property real pointed: Math.max(0, Math.min(1, area.mouseX / Math.max(1, width)))
    property real thickness: em * 0.28

    // `last` is true when the user has released the button.
    signal moved(value: real, last: bool)

    readonly property real shown: dragging ? pointed : Math.max(0, Math.min(1, value))

    implicitHeight: em * 1.4
    opacity: enabled ? 1 : 0.5

    Rectangle {
        id: line

        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: slider.thickness * (slider.hovered && slider.enabled ? 1.5 : 1)
        radius: height / 2
        color: "#4da9c6dd"

        Behavior on height { NumberAnimation { duration: 90 } }

        Rectangle {
            width: slider.shown * line.width
            height: parent.height
            radius: height / 2
            color: "#7fd6d0"
        }
    }

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        x: slider.shown * slider.width - width / 2
        width: slider.em * 0.95
        height: width
        radius: width / 2
        color: "#f6efdd"
        scale: slider.hovered && slider.enabled ? 1 : 0.75

        Behavior on scale { NumberAnimation { duration: 90 } }
    }

    MouseArea {
        id: area

        anchors.fill: parent
        anchors.topMargin: -slider.em * 0.2
        anchors.bottomMargin: -slider.em * 0.2
        hoverEnabled: true
        preventStealing: true
        onPressed: slider.moved(slider.pointed, false)
        onPositionChanged: if (pressed) slider.moved(slider.pointed, false)
        onReleased: slider.moved(slider.pointed, true)
    }
}
