pragma ComponentBehavior: Bound

import QtQuick

/*! A round button with an icon. A hint describes its action while the pointer rests on it. */
Item {
    id: button

    required property real em
    // The file name of an image of the module, without its extension.
    required property string icon
    property string hint
    // Marks the button as switched on.
    property bool checked
    property real iconSize: em * 1.5

    signal clicked()

    implicitWidth: em * 2.4
    implicitHeight: em * 2.4
    opacity: enabled ? 1 : 0.35

    Accessible.role: Accessible.Button
    Accessible.name: button.hint
    Accessible.onPressAction: button.clicked()

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: "#f6efdd"
        opacity: area.pressed ? 0.28 : area.containsMouse ? 0.16 : 0

        Behavior on opacity { NumberAnimation { duration: 90 } }
    }

    Image {
        anchors.centerIn: parent
        width: button.iconSize
        height: width
        sourceSize: Qt.size(width, width)
        source: "qrc:/Multimedia/assets/images/" + button.icon + ".svg"
        cache: false
        scale: area.pressed ? 0.9 : 1

        Behavior on scale { NumberAnimation { duration: 90 } }
    }

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        y: parent.height - height
        width: button.em * 0.9
        height: Math.max(2, button.em * 0.16)
        radius: height / 2
        color: "#7fd6d0"
        visible: button.checked
    }

    MouseArea {
        id: area

        anchors.fill: parent
        hoverEnabled: true
        onClicked: button.clicked()
    }

    Timer {
        id: rest

        interval: 600
        running: area.containsMouse && !area.pressed && button.hint !== ""
    }

    Rectangle {
        id: bubble

        // Keeps the hint within the scene, wherever the button is.
        readonly property real centred: (button.width - width) / 2
        readonly property Item scene: button.Window.contentItem
        readonly property real sceneX: scene && visible ? button.mapToItem(scene, centred, 0).x : 0
        readonly property real sceneWidth: scene?.width ?? 0

        x: centred + Math.max(0, button.em * 0.4 - sceneX)
            - Math.max(0, sceneX + width + button.em * 0.4 - sceneWidth)
        y: -height - button.em * 0.5
        width: words.implicitWidth + button.em * 1.2
        height: words.implicitHeight + button.em * 0.6
        radius: button.em * 0.5
        color: "#e6071327"
        border.width: 1
        border.color: "#2b4c70"
        visible: opacity > 0
        opacity: area.containsMouse && !area.pressed && !rest.running && button.hint !== "" ? 1 : 0

        Behavior on opacity { NumberAnimation { duration: 120 } }

        Text {
            id: words

            anchors.centerIn: parent
            text: button.hint
            textFormat: Text.PlainText
            color: "#f6efdd"
            font.pixelSize: button.em * 0.85
        }
    }
}
