pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    Lets the user choose a colour for a page: by hue, saturation and value, from swatches, or as a
    number.
*/
DialogCard {
    id: dialog

    required property ColorDialogRequest request

    property color picked: "black"
    // The positions of the handles. They are not read from the colour, because a grey has no hue.
    property real hue
    property real saturation
    property real value

    function pick(choice: color): void {
        if (choice.hsvHue >= 0)
            dialog.hue = choice.hsvHue;
        dialog.saturation = choice.hsvSaturation;
        dialog.value = choice.hsvValue;
        dialog.picked = choice;
    }

    function mix(hue: real, saturation: real, value: real): void {
        dialog.hue = hue;
        dialog.saturation = saturation;
        dialog.value = value;
        dialog.picked = Qt.hsva(hue, saturation, value, 1);
    }

    function within(part: real): real {
        return Math.max(0, Math.min(1, part));
    }

    title: qsTr("Choose a colour")
    preferredWidth: em * 22
    firstFocus: hex
    acceptable: hex.acceptableInput

    onAccepted: dialog.request.dialogAccept(dialog.picked)
    onRejected: dialog.request.dialogReject()
    onPickedChanged: {
        if (hex.text.toLowerCase() !== dialog.picked.toString())
            hex.text = dialog.picked.toString();
    }
    Component.onCompleted: {
        dialog.pick(dialog.request.color);
        hex.selectAll();
    }

    Rectangle {
        id: square

        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.preferredHeight: dialog.em * 9
        Layout.maximumHeight: dialog.em * 9
        color: Qt.hsva(dialog.hue, 1, 1, 1)

        Rectangle {
            anchors.fill: parent
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0; color: "white" }
                GradientStop { position: 1; color: "#00ffffff" }
            }
        }

        Rectangle {
            anchors.fill: parent
            gradient: Gradient {
                GradientStop { position: 0; color: "transparent" }
                GradientStop { position: 1; color: "black" }
            }
        }

        Rectangle {
            x: dialog.saturation * square.width - width / 2
            y: (1 - dialog.value) * square.height - height / 2
            width: dialog.em
            height: width
            radius: width / 2
            color: dialog.picked
            border.width: Math.max(2, dialog.em * 0.14)
            border.color: dialog.value > 0.6 && dialog.saturation < 0.5 ? "#071327" : "#f6efdd"
        }

        MouseArea {
            function follow(mouse: MouseEvent): void {
                dialog.mix(dialog.hue, dialog.within(mouse.x / width),
                           1 - dialog.within(mouse.y / height));
            }

            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => follow(mouse)
            onPositionChanged: mouse => follow(mouse)
        }
    }

    Rectangle {
        id: rainbow

        Layout.fillWidth: true
        Layout.preferredHeight: dialog.em * 1.1
        radius: height / 2
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: "#ff0000" }
            GradientStop { position: 1 / 6; color: "#ffff00" }
            GradientStop { position: 2 / 6; color: "#00ff00" }
            GradientStop { position: 3 / 6; color: "#00ffff" }
            GradientStop { position: 4 / 6; color: "#0000ff" }
            GradientStop { position: 5 / 6; color: "#ff00ff" }
            GradientStop { position: 1; color: "#ff0000" }
        }

        Rectangle {
            x: dialog.hue * rainbow.width - width / 2
            anchors.verticalCenter: parent.verticalCenter
            width: dialog.em * 0.6
            height: dialog.em * 1.6
            radius: width / 2
            color: "transparent"
            border.width: Math.max(2, dialog.em * 0.14)
            border.color: "#f6efdd"
        }

        MouseArea {
            function follow(mouse: MouseEvent): void {
                dialog.mix(dialog.within(mouse.x / width), dialog.saturation, dialog.value);
            }

            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => follow(mouse)
            onPositionChanged: mouse => follow(mouse)
        }
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: dialog.em * 0.3

        Repeater {
            model: ["#ffffff", "#9aa0a6", "#000000", "#e53935", "#fb8c00", "#fdd835", "#43a047",
                "#00acc1", "#1e88e5", "#8e24aa"]

            Rectangle {
                id: swatch

                required property string modelData

                Layout.fillWidth: true
                Layout.preferredHeight: dialog.em * 1.5
                radius: dialog.em * 0.3
                color: modelData
                border.width: 1
                border.color: "#3b618a"

                MouseArea {
                    anchors.fill: parent
                    onClicked: dialog.pick(swatch.color)
                }
            }
        }
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: dialog.em * 0.7

        Rectangle {
            Layout.preferredWidth: dialog.em * 3.4
            Layout.preferredHeight: dialog.em * 2.3
            radius: dialog.em * 0.5
            color: dialog.picked
            border.width: 1
            border.color: "#3b618a"
        }

        CardField {
            id: hex

            Layout.fillWidth: true
            em: dialog.em
            text: "#000000"
            validator: RegularExpressionValidator {
                regularExpression: /#[0-9a-fA-F]{6}/
            }
            onTextEdited: {
                if (acceptableInput)
                    dialog.pick(text);
            }
        }
    }
}
