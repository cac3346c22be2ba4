pragma ComponentBehavior: Bound

import QtQuick

/*!
    What the benchmarks draw, on the library's side and on raw Qt's: thirty tiles on five rings that
    turn, and a text that changes all the time. Few bindings, since the scenes of all views run on
    one thread, and those that are not being measured are not to be felt.
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
