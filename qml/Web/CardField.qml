pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic

/*! A text field on the cards that are shown above a page. */
TextField {
    id: field

    required property real em

    implicitHeight: em * 2.3
    leftPadding: em * 0.8
    rightPadding: em * 0.8
    topPadding: 0
    bottomPadding: 0
    verticalAlignment: Text.AlignVCenter
    font.pixelSize: em
    color: "#f6efdd"
    placeholderTextColor: "#7f9cb8"
    selectionColor: "#7fd6d0"
    selectedTextColor: "#071327"
    selectByMouse: true

    background: Rectangle {
        radius: field.em * 0.5
        color: "#071327"
        border.width: Math.max(1, field.em * (field.activeFocus ? 0.12 : 0.06))
        border.color: field.activeFocus ? "#7fd6d0" : "#3b618a"
    }
}
