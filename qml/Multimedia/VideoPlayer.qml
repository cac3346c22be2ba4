pragma ComponentBehavior: Bound

import QtQuick
import Custom 1.0
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a video player: the picture, and above it the controls, used by mouse and keyboard.

    A click plays or pauses, and the wheel changes the volume. Space plays or pauses, Left and Right
    seek by 5 s, Up and Down change the volume, M switches the sound off or on, and a digit seeks to
    that tenth of the source. Areas without a picture are transparent.
*/
MediaScene {
    id: root

    readonly property bool controlsEnabled: host?.controls_enabled ?? true
    readonly property bool autoHide: host?.controls_auto_hide ?? false

    readonly property int stepLength: 5000
    readonly property real volumeStep: 0.05

    // The user has used the mouse or keyboard within the last seconds.
    property bool awake: true
    readonly property bool controlsShown: controlsEnabled
        && (!autoHide || awake || !playback.playing || controls.busy)

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
        filter.output = picture.videoSink;
        root.host?.setVideoSink(filter.videoSink); // qmllint disable unresolved-type
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

    FrameFilter {
        id: filter
    }

    Subtitles {
        id: subtitles

        readonly property rect shown: picture.contentRect

        anchors.fill: parent
        area: Qt.rect(Math.max(0, shown.x), Math.max(0, shown.y), Math.min(width, shown.width),
                      Math.min(height, shown.height))
        words: controls.visible && controls.liftsSubtitle ? "" : filter.subtitleText
    }

    HoverHandler {
        id: hand

        property point last

        enabled: root.controlsEnabled
        // The handler reports the point in every frame, whether or not it has moved.
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
        subtitle: filter.subtitleText
        subtitleEdge: subtitles.lowerEdge
        onReleased: root.forceActiveFocus()

        Behavior on opacity {
            enabled: root.controlsEnabled
            NumberAnimation { duration: 220; easing.type: Easing.OutCubic }
        }
    }
}
