import QtQuick

// One px too narrow to keep its own size.
Rectangle {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    width: 15
    height: 300
    color: "#00ff00"
}
