import QtQuick

// Draws nothing.
Item {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)
}
