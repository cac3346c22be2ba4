import QtQuick

/*!
    What the benchmarks draw, on the library's side and on raw Qt's: some thirty items that are moved,
    turned and faded by bindings, and a text that changes all the time.
*/
Rectangle {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    property real phase

    gradient: Gradient {
        GradientStop {
            position: 0
            color: "#14213d"
        }
        GradientStop {
            position: 1
            color: "#3d5a80"
        }
    }

    NumberAnimation on phase {
        from: 0
        to: 2 * Math.PI
        duration: 5000
        loops: Animation.Infinite
    }

    // The library's view is asked here how many frames it has drawn. Raw Qt is sent no mouse.
    MouseArea {
        anchors.fill: parent
        onPressed: root.javaScriptConsoleMessage(0, view.framesRendered, 0, "") // qmllint disable unqualified
    }

    Repeater {
        model: 30

        Rectangle {
            id: tile

            required property int index
            readonly property real angle: root.phase + index * Math.PI / 15

            x: root.width * (0.5 + 0.4 * Math.cos(angle)) - width / 2
            y: root.height * (0.5 + 0.4 * Math.sin(angle * 2)) - height / 2
            width: root.width / 20
            height: root.height / 16
            radius: height / 5
            rotation: angle * 90
            opacity: 0.6 + 0.4 * Math.sin(angle * 3)
            color: Qt.hsva(index / 30, 0.6, 0.95, 1)
        }
    }

    Text {
        anchors.centerIn: parent
        text: root.phase.toFixed(3)
        color: "white"
        font.pixelSize: root.height / 8
    }
}
