pragma ComponentBehavior: Bound

import QtQuick
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a video player: the picture, and above it the controls, worked by mouse and keys.

    A click plays and pauses, the wheel turns the volume. Space plays and pauses, left and right go 5 s
    back and forth, up and down turn the volume, M switches the sound off and on, and a digit goes to
    that tenth of the source. What the picture leaves free is transparent.
*/
MediaScene {
    id: root

    readonly property bool controlsEnabled: host?.controls_enabled ?? true
    readonly property bool autoHide: host?.controls_auto_hide ?? false

    readonly property int stepLength: 5000
    readonly property real volumeStep: 0.05

    // Someone has been here a moment ago.
    property bool awake: true
    readonly property bool controlsShown: controlsEnabled
        && (!autoHide || awake || !playback.playing || controls.busy)

    // The picture draws its subtitles into its lower part: above a margin of 1/20, in lines of about 1/14.
    readonly property rect subtitleArea: {
        const lines = picture.videoSink.subtitleText.split("\n").length;
        const area = picture.contentRect;
        const height = area.height * lines * 0.075;
        return Qt.rect(area.x, area.y + area.height * 0.95 - height, area.width, height);
    }

    function wake(): void {
        root.awake = true;
        sleep.restart();
    }

    function handleKey(key: int): bool {
        if (key === Qt.Key_Space)
            playback.toggle();
        else if (key === Qt.Key_Left)
            playback.step(-root.stepLength);
        else if (key === Qt.Key_Right)
            playback.step(root.stepLength);
        else if (key === Qt.Key_Up)
            playback.setVolume(playback.volume + root.volumeStep);
        else if (key === Qt.Key_Down)
            playback.setVolume(playback.volume - root.volumeStep);
        else if (key === Qt.Key_M)
            playback.toggleMuted();
        else if (key >= Qt.Key_0 && key <= Qt.Key_9)
            playback.seek(playback.duration * (key - Qt.Key_0) / 10);
        else
            return false;
        return true;
    }

    focus: true
    clip: true

    Keys.enabled: root.controlsEnabled
    Keys.onPressed: event => {
        root.wake();
        event.accepted = root.handleKey(event.key);
    }

    onAutoHideChanged: root.wake()

    Component.onCompleted: {
        root.host?.setVideoSink(picture.videoSink);
        root.wake();
    }

    Playback {
        id: playback

        view: root.host
    }

    Timer {
        id: sleep

        interval: 3000
        onTriggered: root.awake = false
    }

    Picture {
        id: picture

        mode: playback.fillMode
    }

    HoverHandler {
        id: hand

        property point last

        enabled: root.controlsEnabled
        // It is told of in each frame, moved or not.
        onPointChanged: {
            if (hand.point.position !== hand.last)
                root.wake();
            hand.last = hand.point.position;
        }
    }

    MouseArea {
        anchors.fill: parent
        enabled: root.controlsEnabled
        onPressed: root.wake()
        onClicked: playback.toggle()
        onWheel: wheel => {
            root.wake();
            playback.setVolume(playback.volume + Math.sign(wheel.angleDelta.y) * root.volumeStep);
        }
    }

    PlayerNotice {
        anchors.fill: parent
        opacity: root.controlsEnabled ? 1 : 0
        playback: playback
        em: root.em
    }

    PlayerControls {
        id: controls

        anchors.fill: parent
        enabled: root.controlsShown
        visible: opacity > 0
        opacity: root.controlsShown ? 1 : 0
        playback: playback
        em: root.em
        subtitle: picture.videoSink.subtitleText
        subtitleArea: root.subtitleArea
        onReleased: root.forceActiveFocus()

        Behavior on opacity {
            enabled: root.controlsEnabled
            NumberAnimation { duration: 220; easing.type: Easing.OutCubic }
        }
    }
}
