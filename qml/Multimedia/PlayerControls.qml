pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import Multimedia // qmllint disable unused-imports

/*!
    The controls of the player: the source's name at the top, and a seek bar and a row of buttons at
    the bottom. A narrow view hides the buttons whose actions also have keys.
*/
Item {
    id: controls

    required property Playback playback
    required property real em
    // The current subtitle, and its lower edge in the picture.
    property string subtitle
    property real subtitleEdge
    // Where the controls would cover the subtitle, it is shown above them.
    readonly property bool liftsSubtitle: subtitleEdge > lower.y

    // The controls no longer need the keyboard focus.
    signal released()

    // The user is interacting with the controls, so they must stay visible.
    readonly property bool busy: seekBar.dragging || volumeSlider.dragging || menu.visible
    readonly property real margin: em * 1.1
    readonly property real roomInEm: width / em

    readonly property list<real> rates: [0.25, 0.5, 0.75, 1, 1.25, 1.5, 2]
    readonly property list<int> fillModes: [
        VideoOutput.PreserveAspectFit, VideoOutput.PreserveAspectCrop, VideoOutput.Stretch
    ]

    function rateText(rate: real): string {
        return rate === 1 ? qsTr("Normal") : Number(rate).toLocaleString(Qt.locale(), "g", 3) + "\u00d7";
    }

    // Opens the menu above a button, or closes it if the same button has opened it.
    function offer(owner: string, button: Item, title: string, choices: list<string>, current: int): void {
        const again = menu.visible && menu.owner === owner;
        menu.close();
        if (!again)
            menu.open(owner, title, choices, current, button.mapToItem(controls, button.width / 2, 0).x);
    }

    function choose(owner: string, index: int): void {
        if (owner === "rate")
            controls.playback.setRate(controls.rates[index]);
        else if (owner === "audio")
            controls.playback.setAudioTrack(index);
        else if (owner === "subtitles")
            controls.playback.setSubtitleTrack(index - 1);
        else if (owner === "picture")
            controls.playback.setFillMode(controls.fillModes[index]);
    }

    // --- the backgrounds that keep text legible on any picture ---------------------------------

    Rectangle {
        width: parent.width
        height: Math.min(parent.height * 0.3, controls.em * 5)
        visible: name.visible
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#b3040a17" }
            GradientStop { position: 1.0; color: "#00040a17" }
        }
    }

    Rectangle {
        id: ground

        anchors.bottom: parent.bottom
        width: parent.width
        height: Math.min(parent.height, controls.em * 9)
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#00040a17" }
            GradientStop { position: 0.5; color: "#99040a17" }
            GradientStop { position: 1.0; color: "#e6040a17" }
        }
    }

    Rectangle {
        anchors.centerIn: lifted
        width: lifted.contentWidth + controls.em
        height: lifted.contentHeight + controls.em * 0.4
        color: "#99000000"
        visible: lifted.visible
    }

    Text {
        id: lifted

        anchors.horizontalCenter: parent.horizontalCenter
        // The time under the pointer is displayed between the subtitle and the bar.
        y: lower.y - height - controls.em * 2.4
        width: parent.width - 2 * controls.margin
        text: controls.subtitle
        textFormat: Text.PlainText
        visible: text !== "" && controls.liftsSubtitle
        color: "#ffffff"
        font.pixelSize: Math.max(controls.em, controls.height * 0.05)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 12
        elide: Text.ElideRight
    }

    Text {
        id: name

        x: controls.margin
        y: controls.margin * 0.8
        width: parent.width - 2 * controls.margin
        text: controls.playback.name
        textFormat: Text.PlainText
        visible: text !== ""
        color: "#f6efdd"
        font.pixelSize: controls.em * 1.15
        elide: Text.ElideMiddle
    }

    // --- the bar and the buttons ---------------------------------------------------------------

    // The gaps between the buttons do not pass clicks on to the picture.
    MouseArea {
        anchors.fill: lower
        anchors.margins: -controls.em * 0.5
        hoverEnabled: true
    }

    Column {
        id: lower

        x: controls.margin
        anchors.bottom: parent.bottom
        anchors.bottomMargin: controls.em * 0.6
        width: parent.width - 2 * controls.margin
        spacing: controls.em * 0.3

        SeekBar {
            id: seekBar

            width: parent.width
            playback: controls.playback
            em: controls.em
        }

        Item {
            width: parent.width
            height: left.height

            Row {
                id: left

                spacing: controls.em * 0.2

                PlayerButton {
                    em: controls.em
                    icon: "skip_previous"
                    hint: qsTr("To the start")
                    visible: controls.roomInEm > 34
                    enabled: controls.playback.seekable
                    onClicked: controls.playback.seek(0)
                }

                PlayerButton {
                    em: controls.em
                    icon: controls.playback.playing ? "pause"
                        : controls.playback.ended ? "replay" : "play"
                    hint: controls.playback.playing ? qsTr("Pause (space)") : qsTr("Play (space)")
                    enabled: controls.playback.hasSource
                    onClicked: controls.playback.toggle()
                }

                PlayerButton {
                    em: controls.em
                    icon: controls.playback.silent ? "volume_off" : "volume_up"
                    hint: controls.playback.muted ? qsTr("Sound on (M)") : qsTr("Sound off (M)")
                    onClicked: controls.playback.toggleMuted()
                }

                PlayerSlider {
                    id: volumeSlider

                    anchors.verticalCenter: parent.verticalCenter
                    width: controls.em * 5
                    visible: controls.roomInEm > 30
                    em: controls.em * 0.85
                    value: controls.playback.muted ? 0 : controls.playback.volume
                    onMoved: value => controls.playback.setVolume(value)
                }

                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    leftPadding: controls.em * 0.8
                    text: controls.playback.timeText(controls.playback.position)
                    textFormat: Text.PlainText
                    color: "#f6efdd"
                    font.pixelSize: controls.em
                }

                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    leftPadding: controls.em * 0.5
                    text: "\u2212" + controls.playback.timeText(controls.playback.duration
                                                               - controls.playback.position)
                    textFormat: Text.PlainText
                    visible: controls.roomInEm > 38 && controls.playback.duration > 0
                    color: "#a9c6dd"
                    font.pixelSize: controls.em
                }
            }

            Row {
                anchors.right: parent.right
                spacing: controls.em * 0.2

                PlayerButton {
                    id: subtitlesButton

                    em: controls.em
                    icon: "subtitles"
                    hint: qsTr("Subtitles")
                    checked: controls.playback.subtitleTrack >= 0
                    visible: controls.playback.subtitleTracks.length > 0
                    onClicked: controls.offer(
                        "subtitles", subtitlesButton, hint,
                        [qsTr("Off"), ...controls.playback.subtitleTracks],
                        controls.playback.subtitleTrack + 1)
                }

                PlayerButton {
                    id: audioButton

                    em: controls.em
                    icon: "voice_chat"
                    hint: qsTr("Audio")
                    visible: controls.playback.audioTracks.length > 1
                    onClicked: controls.offer(
                        "audio", audioButton, hint, controls.playback.audioTracks,
                        controls.playback.audioTrack)
                }

                PlayerButton {
                    id: rateButton

                    em: controls.em
                    icon: "speed"
                    hint: qsTr("Playback rate")
                    checked: controls.playback.rate !== 1
                    visible: controls.roomInEm > 22
                    onClicked: controls.offer(
                        "rate", rateButton, hint, controls.rates.map(rate => controls.rateText(rate)),
                        controls.rates.indexOf(controls.playback.rate))
                }

                PlayerButton {
                    em: controls.em
                    icon: "loop"
                    hint: controls.playback.loops ? qsTr("Play once") : qsTr("Repeat")
                    checked: controls.playback.loops
                    visible: controls.roomInEm > 26
                    onClicked: controls.playback.setLoops(!controls.playback.loops)
                }

                PlayerButton {
                    id: fillButton

                    em: controls.em
                    icon: "crop"
                    hint: qsTr("Picture")
                    visible: controls.playback.hasVideo && controls.roomInEm > 28
                    onClicked: controls.offer(
                        "picture", fillButton, hint,
                        [qsTr("Whole picture"), qsTr("Fill and crop"), qsTr("Stretch")],
                        controls.fillModes.indexOf(controls.playback.fillMode))
                }
            }
        }
    }

    PlayerMenu {
        id: menu

        anchors.fill: parent
        em: controls.em
        lowerEdge: lower.y - controls.em * 0.4
        onClosed: controls.released()
        onChosen: (owner, index) => controls.choose(owner, index)
    }
}
