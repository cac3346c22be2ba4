pragma ComponentBehavior: Bound

import QtQuick

/*! A card in the middle of the scene, with a text that replaces the picture. */
Item {
    id: notice

    required property real em
    property string icon // name of an image of the module; empty for none
    property string words
    property string details
    property bool failed
    property bool waiting
    // True once waiting has taken long enough to show the notice.
    readonly property bool waitedLong: patience.over

    Rectangle {
        anchors.centerIn: parent
        width: Math.min(parent.width - notice.em * 2,
                        Math.max(words.implicitWidth, details.implicitWidth, notice.em * 6)
                            + notice.em * 4)
        height: content.height + notice.em * 2.4
        radius: notice.em
        color: "#d90a1a34"
        border.width: Math.max(1, notice.em * 0.08)
        border.color: notice.failed ? "#c98b7a" : "#2b4c70"

        Column {
            id: content

            anchors.centerIn: parent
            width: parent.width - notice.em * 3
            spacing: notice.em * 0.6

            Image {
                id: picture

                anchors.horizontalCenter: parent.horizontalCenter
                width: notice.em * 3
                height: width
                sourceSize: Qt.size(width, width)
                source: notice.icon === "" ? ""
                    : "qrc:/Multimedia/assets/images/" + notice.icon + ".svg"
                cache: false
                visible: notice.icon !== ""

                RotationAnimation on rotation {
                    from: 0
                    to: 360
                    duration: 2400
                    loops: Animation.Infinite
                    running: notice.waiting && notice.visible
                    onStopped: picture.rotation = 0
                }
            }

            Text {
                id: words

                width: parent.width
                text: notice.words
                textFormat: Text.PlainText
                color: "#f6efdd"
                font.pixelSize: notice.em * 1.2
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }

            Text {
                id: details

                width: parent.width
                text: notice.details
                textFormat: Text.PlainText
                visible: text !== ""
                color: "#a9c6dd"
                font.pixelSize: notice.em * 0.9
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
            }
        }
    }

    Timer {
        id: patience

        property bool over

        interval: 400
        running: notice.waiting
        onRunningChanged: patience.over = false
        onTriggered: patience.over = true
    }
}
