import QtQuick

// Wide enough to keep its own size, which has no height.
Item {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    width: 64
    height: 0
}
