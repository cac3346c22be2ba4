pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import Custom 1.0
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a screen capture view: the whole screen, or a text that explains why it is not
    shown. Areas without a picture are transparent.
*/
MediaScene {
    id: root

    readonly property bool active: (root.host?.active ?? 1) !== 0

    // Frames from before capturing was switched off must not be shown again.
    property bool current

    onActiveChanged: root.current = false

    Component.onCompleted: {
        // Setting the sink makes the recorder choose the screen; by now its hint is set.
        recorder.videoSink = picture.videoSink;
        // The recorder is active from the start, so its property does not change: this signal
        // starts it.
        recorder.activeChanged();
    }

    ScreenRecorder {
        id: recorder

        physical_screen_hint: root.host?.physical_screen_hint ?? "-1"
        active: root.active
    }

    Connections {
        target: picture.videoSink
        enabled: root.active && !root.current

        function onVideoFrameChanged(): void { root.current = true; }
    }

    VideoOutput {
        id: picture

        anchors.fill: parent
        fillMode: VideoOutput.PreserveAspectFit
        visible: root.active && root.current && !notice.failed
    }

    Notice {
        id: notice

        anchors.fill: parent
        em: root.em
        failed: root.active && recorder.errorString !== ""
        icon: failed ? "error" : "screen_off"
        words: failed ? qsTr("The screen cannot be captured") : qsTr("Capturing is off")
        details: failed ? recorder.errorString : ""
        visible: failed || !root.active
    }
}
