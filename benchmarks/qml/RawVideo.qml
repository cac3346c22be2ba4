pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia

/*! A minimal scene that shows a video, fed through its sink. */
Item {
    readonly property QtObject videoSink: picture.videoSink

    VideoOutput {
        id: picture

        anchors.fill: parent
    }
}
