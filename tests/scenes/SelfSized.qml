import QtQuick

// Has a size of its own, and a mark in each corner to show that all of it is there.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    width: 800
    height: 600

    component Mark: Rectangle {
        width: 10
        height: 10
        color: "#ffffff"
    }

    Rectangle { anchors.fill: parent; color: "#ff0000" }
    Mark { }
    Mark { anchors.right: parent.right }
    Mark { anchors.bottom: parent.bottom }
    Mark { anchors { right: parent.right; bottom: parent.bottom } }
}
