pragma ComponentBehavior: Bound

import QtQuick

/*!
    A pattern that moves by one step for each rendered frame, so that a dropped, repeated or torn
    frame can be seen by eye and found by a program.

    All of it follows `frame`: 0 in the first frame rendered, one more in each frame after it.

    For a program: a strip of 27 square cells stands along the top edge, and a copy of it along the
    bottom edge. With c = floor(width / 27), the centre of cell k is at x = (k + 0.5) * c, and at
    y = c / 2 in the upper strip, y = height - c / 2 in the lower one. Cells are white (1) or
    black (0):

        cell   0        always white   } so that a reader can find its level and know that the
        cell   1        always black   } strip is there
        cells  2 - 25   the frame's number modulo 2^24, highest bit first
        cell  26        even parity: the ones of cells 2 to 26 are an even number

    Strips that differ belong to a torn frame; a wrong parity, to one that is mixed or blurred.
*/
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    readonly property color night: "#061021"
    readonly property color ivory: "#f6efdd"
    readonly property color muted: "#8fa9c2"
    readonly property color calm: "#7fd6d0"

    readonly property int numberBits: 24
    readonly property int cellCount: numberBits + 3
    readonly property int cell: Math.floor(width / cellCount)

    // The number of frames rendered so far, which is the number of the next frame.
    property int frame: 0

    readonly property real inset: cell * 1.6
    // The part between the strips.
    readonly property rect stage: Qt.rect(inset, cell + inset * 0.7, width - 2 * inset,
        height - 2 * cell - 1.4 * inset)
    readonly property bool wide: stage.width > stage.height * 1.2

    focus: true

    // The value of a strip's cell, 1 or 0.
    function bit(index: int, number: int): int {
        if (index < 2)
            return 1 - index;
        if (index < root.cellCount - 1)
            return (number >> (root.cellCount - 2 - index)) & 1;
        return root.parity(number);
    }

    function parity(number: int): int {
        let ones = 0;
        for (let rest = number & 0xffffff; rest > 0; rest >>= 1)
            ones += rest & 1;
        return ones % 2;
    }

    // Connected to the end of a frame, not to the animation clock, which does not follow the host's
    // rendering: a change here appears in exactly the next frame.
    Connections {
        target: root.Window.window

        function onAfterFrameEnd(): void {
            root.frame += 1;
        }
    }

    FontLoader {
        id: mono

        source: "qrc:/Splash/assets/fonts/JetBrainsMono-Regular.ttf"
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#0d2442" }
            GradientStop { position: 1.0; color: root.night }
        }
    }

    Strip {
        anchors.top: parent.top
    }

    Strip {
        anchors.bottom: parent.bottom
    }

    Dial {
        id: dial

        width: Math.min(root.stage.width * (root.wide ? 0.36 : 0.4), root.stage.height * 0.62)
        height: width
        x: root.stage.x
        y: root.stage.y + (track.y - root.stage.y - height) / 2 - root.inset * 0.2
    }

    Column {
        id: readout

        anchors.left: dial.right
        anchors.leftMargin: root.inset
        anchors.right: flicker.left
        anchors.rightMargin: root.inset
        anchors.verticalCenter: dial.verticalCenter

        Caption {
            text: "frame"
        }

        Text {
            width: parent.width
            text: root.frame
            color: root.ivory
            font.family: mono.font.family
            // A digit is 0.6 of the font size wide. Four digits fit; more digits become smaller.
            font.pixelSize: Math.min(dial.height * 0.45, width / (0.6 * Math.max(4, text.length)))
            renderType: Text.CurveRendering
        }

        Caption {
            text: `0x${(root.frame & 0xffffff).toString(16).padStart(6, "0")}`
        }
    }

    // One half is lit in even frames, the other in odd ones. At a constant rate both look grey; a
    // dropped or repeated frame flashes.
    Column {
        id: flicker

        x: root.stage.x + root.stage.width - width
        anchors.verticalCenter: dial.verticalCenter
        width: Math.max(24, dial.width * 0.28)
        spacing: root.inset * 0.3

        Field { name: "even"; lit: root.frame % 2 === 0 }
        Field { name: "odd"; lit: root.frame % 2 === 1 }
    }

    Item {
        id: track

        readonly property int steps: 60
        readonly property int step: Math.floor(root.stage.width / steps)

        x: root.stage.x + Math.floor((root.stage.width - width) / 2)
        y: root.stage.y + root.stage.height - height
        width: step * steps
        height: Math.max(14, root.stage.height * 0.13)

        Repeater {
            model: track.steps

            Rectangle {
                required property int index

                x: index * track.step
                width: Math.max(1, track.step - (track.step > 4 ? 2 : 1))
                height: track.height
                color: index % 10 === 0 ? "#3d6c93" : "#1b3a5c"
            }
        }

        Rectangle {
            x: root.frame % track.steps * track.step
            width: track.step
            height: track.height
            color: root.ivory
        }
    }

    component Caption: Text {
        color: root.muted
        font.family: mono.font.family
        font.pixelSize: Math.max(9, dial.height * 0.075)
    }

    component Strip: Row {
        id: strip

        Repeater {
            model: root.cellCount

            Rectangle {
                required property int index

                width: root.cell
                height: root.cell
                color: root.bit(index, root.frame) ? "#ffffff" : "#000000"
            }
        }
    }

    component Field: Rectangle {
        id: field

        required property string name
        required property bool lit

        width: parent.width
        height: dial.height * 0.38
        color: lit ? "#ffffff" : "#000000"

        Caption {
            anchors.centerIn: parent
            text: field.name
            color: "#808080"
        }
    }

    // A clock face of 60 frames, whose hand advances by one per frame.
    component Dial: Item {
        id: face

        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: "#0a1a30"
            border.color: "#3d6c93"
            border.width: Math.max(1, face.width * 0.01)
        }

        Repeater {
            model: 60

            Rectangle {
                id: mark

                required property int index

                readonly property bool major: index % 5 === 0

                x: (face.width - width) / 2
                y: face.height * 0.04
                width: Math.max(1, face.width * (major ? 0.014 : 0.007))
                height: face.height * (major ? 0.07 : 0.04)
                color: major ? root.ivory : "#5f86a8"
                antialiasing: true
                transform: Rotation {
                    origin.x: mark.width / 2
                    origin.y: face.height / 2 - mark.y
                    angle: mark.index * 6
                }
            }
        }

        Rectangle {
            x: (face.width - width) / 2
            y: face.height * 0.14
            width: Math.max(2, face.width * 0.03)
            height: face.height * 0.36
            radius: width / 2
            color: root.calm
            antialiasing: true
            transformOrigin: Item.Bottom
            rotation: root.frame % 60 * 6
        }

        Rectangle {
            anchors.centerIn: parent
            width: face.width * 0.12
            height: width
            radius: width / 2
            color: root.ivory
        }
    }
}
