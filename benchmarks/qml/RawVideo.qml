pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia

/*!
    A picture as somebody would show it who wanted that and nothing else, fed through its sink.
*/
Item {
    readonly property QtObject videoSink: picture.videoSink

    VideoOutput {
        id: picture

        anchors.fill: parent
    }
}
