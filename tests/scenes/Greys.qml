import QtQuick

// Two greys that a conversion between linear and sRGB-encoded values would change.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    Rectangle { width: root.width / 2; height: root.height; color: "#404040" }
    Rectangle { x: root.width / 2; width: root.width / 2; height: root.height; color: "#808080" }
}
