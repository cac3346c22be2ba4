pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import Custom 1.0
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a screen capture view: the screen, whole, or in words why it is not to be seen. What the
    picture leaves free is transparent.
*/
MediaScene {
    id: root

    readonly property bool active: (root.host?.active ?? 1) !== 0

    // What stands in the picture from before capturing was off is not to be seen again.
    property bool current

    onActiveChanged: root.current = false

    Component.onCompleted: {
        // The recorder chooses the screen at this, by a hint that it has by now.
        recorder.videoSink = picture.videoSink;
        // It has not been told to begin yet: it is active from the start, so that nothing has changed.
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
