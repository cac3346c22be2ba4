import QtQuick

// Just wide enough to keep its own size.
Rectangle {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    width: 16
    height: 300
    color: "#00ff00"
}
