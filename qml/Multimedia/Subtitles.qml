import QtQuick

/*!
    What is said in a film, in the lower part of its picture. There is room for some lines of plain text.
*/
Item {
    id: subtitles

    required property rect area // the picture, as far as it is seen
    required property string words

    // Where they stand, for whatever would cover them.
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
