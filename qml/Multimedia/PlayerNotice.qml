pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import Multimedia // qmllint disable unused-imports

/*!
    What there is to say instead of a picture: that the source loads, why it cannot be played, or that
    there is none.
*/
Item {
    id: notice

    required property Playback playback
    required property real em

    readonly property int status: playback.status
    readonly property bool failed: playback.error !== MediaPlayer.NoError
        || status === MediaPlayer.InvalidMedia
    readonly property bool waiting: !failed && (status === MediaPlayer.LoadingMedia
        || status === MediaPlayer.StalledMedia
        || (status === MediaPlayer.BufferingMedia && playback.bufferProgress < 1))
    readonly property bool empty: !failed && !playback.hasSource
    readonly property bool soundOnly: !failed && !waiting && !empty && !playback.hasVideo

    readonly property string icon: failed ? "error" : waiting ? "hourglass" : "audio_track"
    readonly property string words: failed ? reason(playback.error)
        : status === MediaPlayer.LoadingMedia ? qsTr("Loading \u2026")
        : waiting ? qsTr("Buffering \u2026 %1 %").arg(Math.round(playback.bufferProgress * 100))
        : empty ? qsTr("Nothing to play") : playback.title || playback.name
    readonly property string details: failed ? playback.errorString : soundOnly ? playback.author : ""
    readonly property bool wanted: failed || empty || soundOnly || (waiting && patience.over)

    function reason(error: int): string {
        switch (error) {
        case MediaPlayer.FormatError: return qsTr("This format cannot be played");
        case MediaPlayer.NetworkError: return qsTr("The network does not give it");
        case MediaPlayer.AccessDeniedError: return qsTr("Access to it is denied");
        default: return qsTr("It cannot be opened");
        }
    }

    // What takes but a moment is not worth a word.
    Timer {
        id: patience

        property bool over

        interval: 400
        running: notice.waiting
        onRunningChanged: patience.over = false
        onTriggered: patience.over = true
    }

    visible: wanted

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
                source: "qrc:/Multimedia/assets/images/" + notice.icon + ".svg"
                cache: false
                visible: !notice.empty

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
}
