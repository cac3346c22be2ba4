import QtQuick

// Wider than any device's textures.
Item {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    width: 100000
    height: 256
}
