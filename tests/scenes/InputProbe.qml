import QtQuick

// Reports each event that it gets as a console message; what types "later" is reacted to later as well. Numbers are those of Qt's enumerations.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    function report(text: string) {
        javaScriptConsoleMessage(0, text, 0, "InputProbe");
    }

    function describe(mouse: MouseEvent): string {
        return `${mouse.x},${mouse.y} button=${mouse.button} buttons=${mouse.buttons} modifiers=${mouse.modifiers}`;
    }

    function describeKey(key: KeyEvent): string {
        return `${key.key} text="${key.text}" modifiers=${key.modifiers} repeat=${key.isAutoRepeat} count=${key.count}`;
    }

    focus: true
    Keys.onPressed: event => {
        report("key press " + describeKey(event));
        if (event.text === "later")
            Qt.callLater(report, "reacted");
    }
    Keys.onReleased: event => report("key release " + describeKey(event))

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true

        onPressed: mouse => root.report("press " + root.describe(mouse))
        onReleased: mouse => root.report("release " + root.describe(mouse))
        onPositionChanged: mouse => root.report("move " + root.describe(mouse))
        onWheel: wheel => root.report(
            `wheel ${wheel.x},${wheel.y} angle=${wheel.angleDelta.x},${wheel.angleDelta.y}`
            + ` pixels=${wheel.pixelDelta.x},${wheel.pixelDelta.y}`
            + ` buttons=${wheel.buttons} modifiers=${wheel.modifiers} inverted=${wheel.inverted}`)
    }
}
