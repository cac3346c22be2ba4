import QtQuick

/*! Subtitles in the lower part of the picture: several lines of plain text. */
Item {
    id: subtitles

    required property rect area // the visible part of the picture
    required property string words

    // The lower edge of the subtitles, for items that would cover them.
    readonly property real lowerEdge: area.y + area.height * 0.95

    visible: words !== ""

    Rectangle {
        anchors.centerIn: text
        width: text.contentWidth + text.font.pixelSize * 0.4
        height: text.contentHeight
        color: "#80000000"
    }

    Text {
        id: text

        x: subtitles.area.x + subtitles.area.width * 0.05
        y: subtitles.lowerEdge - height
        width: subtitles.area.width * 0.9
        text: subtitles.words
        textFormat: Text.PlainText
        color: "#ffffff"
        font.pixelSize: Math.max(1, subtitles.area.height * 0.06)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 12
        elide: Text.ElideRight
    }
}
