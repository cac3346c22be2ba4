import QtQuick

// One colour, which the pointer chooses: x is its red, y its green. The text typed last is its blue,
// in decimal. So a picture tells which inputs the scene has seen.
Rectangle {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    property point pointer
    property int blue

    color: Qt.rgba(pointer.x / 255, pointer.y / 255, blue / 255, 1)
    focus: true

    Keys.onPressed: event => {
        root.blue = Number(event.text);
        root.javaScriptConsoleMessage(0, event.text, 0, "Tint");
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onPositionChanged: mouse => root.pointer = Qt.point(mouse.x, mouse.y)
    }
}
