pragma ComponentBehavior: Bound

import QtQuick
import Multimedia // qmllint disable unused-imports

/*! The player's position in the source. The time at the pointer is shown above the bar. */
Item {
    id: bar

    required property Playback playback
    required property real em
    readonly property bool dragging: slider.dragging

    // The position that the player is seeking to. It keeps the handle from jumping back until the
    // player has arrived there.
    property real target: -1

    implicitHeight: slider.implicitHeight

    // Limits how often the player seeks while the user drags.
    Timer {
        id: pace

        interval: 120
        onTriggered: if (slider.dragging && bar.target >= 0) bar.playback.seek(bar.target)
    }

    Timer {
        id: arrival

        interval: 400
        onTriggered: bar.target = -1
    }

    PlayerSlider {
        id: slider

        anchors.fill: parent
        em: bar.em
        enabled: bar.playback.seekable
        value: bar.playback.duration <= 0 ? 0
            : (bar.target >= 0 ? bar.target : bar.playback.position) / bar.playback.duration
        onMoved: (value, last) => {
            bar.target = value * bar.playback.duration;
            if (last || !pace.running) {
                bar.playback.seek(bar.target);
                pace.restart();
            }
            arrival.restart();
        }
    }

    Rectangle {
        id: preview

        x: Math.max(0, Math.min(bar.width - width, slider.pointed * bar.width - width / 2))
        y: -height - bar.em * 0.3
        width: time.implicitWidth + bar.em
        height: time.implicitHeight + bar.em * 0.5
        radius: bar.em * 0.5
        color: "#e6071327"
        border.width: 1
        border.color: "#2b4c70"
        visible: slider.enabled && slider.hovered

        Text {
            id: time

            anchors.centerIn: parent
            text: bar.playback.timeText(slider.pointed * bar.playback.duration)
            textFormat: Text.PlainText
            color: "#f6efdd"
            font.pixelSize: bar.em * 0.9
        }
    }
}
