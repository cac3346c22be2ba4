pragma ComponentBehavior: Bound

import QtQuick

/*!
    The scene that the benchmarks draw, for the library and for raw Qt: thirty tiles on five
    rotating rings, and a text that changes all the time. It has few bindings, because the scenes of
    all views run on one thread, and those that are not measured must not affect the result.
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

    // The host reads the library's number of drawn frames here. Raw Qt gets no mouse events.
    MouseArea {
        anchors.fill: parent
        onPressed: root.javaScriptConsoleMessage(0, view.framesRendered, 0, "") // qmllint disable unqualified
    }

    Repeater {
        model: 5

        Item {
            id: ring

            required property int index

            anchors.centerIn: parent
            rotation: root.phase * (index % 2 ? -1 : 1) * 180 / Math.PI
            scale: 0.3 + index * 0.3

            Repeater {
                model: 6

                Rectangle {
                    required property int index
                    readonly property real angle: index * Math.PI / 3

                    x: root.height / 3 * Math.cos(angle) - width / 2
                    y: root.height / 3 * Math.sin(angle) - height / 2
                    width: root.width / 20
                    height: root.height / 16
                    radius: height / 5
                    rotation: angle * 90
                    opacity: 0.5 + 0.1 * ring.index
                    color: Qt.hsva(index / 6, 0.6, 0.95, 1)
                }
            }
        }
    }

    Text {
        anchors.centerIn: parent
        text: root.phase.toFixed(3)
        color: "white"
        font.pixelSize: root.height / 8
    }
}
