pragma ComponentBehavior: Bound

import QtQuick

/*! The page's tool tip for the element under the mouse. */
Rectangle {
    id: tip

    required property real em
    property point position

    function show(text: string, at: point): void {
        words.text = text;
        tip.position = at;
        tip.visible = text !== "";
    }

    // Below the mouse, or above it at the bottom of the view.
    readonly property real below: position.y + em * 1.6

    visible: false
    x: Math.max(0, Math.min(position.x, (parent?.width ?? 0) - width))
    y: below + height <= (parent?.height ?? 0) ? below : Math.max(0, position.y - height - em * 0.4)
    width: words.width + em * 1.2
    height: words.height + em * 0.7
    radius: em * 0.5
    color: "#f2071327"
    border.width: Math.max(1, em * 0.06)
    border.color: "#3b618a"

    Text {
        id: words

        anchors.centerIn: parent
        width: Math.min(implicitWidth, (tip.parent?.width ?? 0) * 0.6)
        textFormat: Text.PlainText
        color: "#f6efdd"
        font.pixelSize: tip.em * 0.9
        maximumLineCount: 8
        elide: Text.ElideRight
        wrapMode: Text.Wrap
    }
}
