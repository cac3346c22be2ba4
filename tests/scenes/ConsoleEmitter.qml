import QtQuick

// Emits one console message for each key press, with the key's text as the message.
Item {
    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    focus: true
    Keys.onPressed: event => javaScriptConsoleMessage(2, event.text, 42, "größe.js")
}
