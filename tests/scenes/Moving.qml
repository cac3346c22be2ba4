import QtQuick

// A white bar that crosses the scene in half a second, over and over.
Rectangle {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    color: "#000000"

    Rectangle {
        width: 32
        height: root.height
        color: "#ffffff"

        NumberAnimation on x {
            from: 0
            to: root.width - 32
            duration: 500
            loops: Animation.Infinite
        }
    }
}
