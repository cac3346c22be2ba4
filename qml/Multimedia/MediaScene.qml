import QtQuick

/*!
    What the scenes of this module have in common.
*/
Item {
    id: scene

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The view that shows this scene. A previewer has none.
    readonly property var host: typeof ctx === "undefined" ? null : ctx // qmllint disable unqualified

    // The unit of what is drawn beside the picture: it grows with the scene.
    readonly property real em: Math.max(10, Math.min(width / 58, height / 32))
}
