import QtQuick

// Two halves, side by side, whose colours change with each key press. Smaller levels keep the halves.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    property bool pressed: false

    focus: true
    Keys.onPressed: pressed = true

    Rectangle {
        width: root.width / 2
        height: root.height
        color: root.pressed ? "#00ff00" : "#ff0000"
    }
    Rectangle {
        x: root.width / 2
        width: root.width / 2
        height: root.height
        color: root.pressed ? "#ffffff" : "#0000ff"
    }
}
