pragma ComponentBehavior: Bound
import QtQuick

// A colour of its own in each corner: tells orientation, order of channels and kind of alpha.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    component Quarter: Rectangle {
        width: root.width / 2
        height: root.height / 2
    }

    Quarter { color: "#ff0000" }
    Quarter { x: width; color: "#00ff00" }
    Quarter { y: height; color: "#0000ff" }
    Quarter { x: width; y: height; color: "#80ffffff" }
}
