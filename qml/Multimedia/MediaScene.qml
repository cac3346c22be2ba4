import QtQuick

/*! The base of this module's scenes. */
Item {
    id: scene

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The view that shows this scene; null in a previewer.
    readonly property var host: typeof ctx === "undefined" ? null : ctx // qmllint disable unqualified

    // The unit for everything that is drawn besides the picture. It grows with the scene.
    readonly property real em: Math.max(10, Math.min(width / 58, height / 32))
}
