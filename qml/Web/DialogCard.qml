pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Web // qmllint disable unused-imports

/*!
    A dialog: a card in the middle of the view, with the page dimmed behind it.

    It ends exactly once, with accepted() or rejected(): by its buttons, by Enter or Escape, by
    accept() or reject(), and at the latest with rejected() when it is destroyed.
*/
FocusScope {
    id: card

    // Shortens texts to a length that can be laid out.
    required property var view
    // The text size, which determines all other sizes.
    required property real em
    property string title
    property string message
    property string acceptText: qsTr("OK")
    // Empty for a dialog that has no button to reject it; Escape still rejects it.
    property string rejectText: qsTr("Cancel")
    property bool acceptable: true
    // False if Enter must not accept the dialog, only the button itself.
    property bool acceptsEnter: true
    // Whether the user can suppress all further dialogs of the page.
    property bool endable
    property real preferredWidth: em * 30
    // The item that gets the focus first; null for the button that accepts.
    property Item firstFocus
    // The items between the message and the buttons.
    default property alias content: body.data

    property bool answered
    // Whether Enter has answered the dialog, so that its release is still to come.
    property bool enterHeld

    signal accepted()
    signal rejected()
    // The user has suppressed further dialogs; this one is still to be rejected.
    signal ended()

    function accept(): void {
        if (card.answered || !card.acceptable)
            return;
        card.answered = true;
        card.accepted();
    }

    function reject(): void {
        if (card.answered)
            return;
        card.answered = true;
        card.rejected();
    }

    function enter(): void {
        card.enterHeld = true;
        if (card.acceptsEnter)
            card.accept();
    }

    function takeFocus(): void {
        (card.firstFocus ?? acceptButton).forceActiveFocus();
    }

    focus: true

    Component.onCompleted: card.takeFocus()
    Component.onDestruction: card.reject()

    Keys.onReturnPressed: card.enter()
    Keys.onEnterPressed: card.enter()
    Keys.onEscapePressed: card.reject()

    Rectangle {
        anchors.fill: parent
        color: "#aa040a17"
    }

    // Keeps all mouse events from the page.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPressed: if (!card.activeFocus) card.takeFocus()
        onWheel: wheel => wheel.accepted = true
    }

    Rectangle {
        id: sheet

        anchors.centerIn: parent
        width: Math.min(card.preferredWidth, card.width - card.em * 1.5)
        height: Math.min(column.implicitHeight + card.em * 2.4, card.height - card.em)
        radius: card.em * 0.9
        color: "#0f2340"
        border.width: Math.max(1, card.em * 0.08)
        border.color: "#2b4c70"

        ColumnLayout {
            id: column

            anchors.fill: parent
            anchors.margins: card.em * 1.2
            spacing: card.em * 0.8

            Text {
                Layout.fillWidth: true
                visible: text !== ""
                text: card.view.shortened(card.title)
                textFormat: Text.PlainText
                color: "#a9c6dd"
                font.pixelSize: card.em * 0.9
                elide: Text.ElideMiddle
            }

            Flickable {
                id: scroll

                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: Math.min(contentHeight, card.em * 1.5)
                Layout.preferredHeight: contentHeight
                Layout.maximumHeight: contentHeight
                visible: card.message !== ""
                contentHeight: words.implicitHeight
                boundsBehavior: Flickable.StopAtBounds
                clip: true

                Text {
                    id: words

                    width: scroll.width - card.em * 0.6
                    text: card.view.shortened(card.message)
                    textFormat: Text.PlainText
                    color: "#f6efdd"
                    font.pixelSize: card.em * 1.1
                    wrapMode: Text.Wrap
                }

                Rectangle {
                    x: scroll.width - width
                    y: scroll.contentY + scroll.visibleArea.yPosition * scroll.height
                    width: card.em * 0.25
                    height: scroll.visibleArea.heightRatio * scroll.height
                    radius: width / 2
                    color: "#3b618a"
                    visible: scroll.visibleArea.heightRatio < 1
                }
            }

            ColumnLayout {
                id: body

                Layout.fillWidth: true
                Layout.fillHeight: body.children.length > 0
                visible: body.children.length > 0
                spacing: card.em * 0.6
            }

            RowLayout {
                Layout.alignment: Qt.AlignRight
                Layout.fillWidth: false
                Layout.maximumWidth: column.width
                spacing: card.em * 0.7

                CardButton {
                    Layout.fillWidth: true
                    em: card.em
                    text: card.rejectText
                    visible: text !== ""
                    onClicked: {
                        card.enterHeld = enterHeld;
                        card.reject();
                    }
                }

                CardButton {
                    id: acceptButton

                    Layout.fillWidth: true
                    em: card.em
                    primary: true
                    text: card.acceptText
                    enabled: card.acceptable
                    onClicked: {
                        card.enterHeld = enterHeld;
                        card.accept();
                    }
                }
            }

            CardButton {
                Layout.fillWidth: true
                em: card.em
                quiet: true
                text: qsTr("No more dialogs from this page")
                visible: card.endable
                onClicked: {
                    card.enterHeld = enterHeld;
                    card.ended();
                }
            }
        }
    }
}
