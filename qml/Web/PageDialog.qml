pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtWebEngine
import Web // qmllint disable unused-imports

/*! The dialogs of alert(), confirm() and prompt(), and the one before the user leaves a page. */
DialogCard {
    id: dialog

    required property JavaScriptDialogRequest request

    readonly property int type: request.type
    readonly property bool leaving: type === JavaScriptDialogRequest.DialogTypeBeforeUnload
    readonly property bool prompting: type === JavaScriptDialogRequest.DialogTypePrompt
    readonly property string host: request.securityOrigin.toString().replace(/^https?:\/\//, "")
        .replace(/\/$/, "")

    title: leaving ? qsTr("Leave this page?") : host === "" ? qsTr("The page says")
        : qsTr("%1 says").arg(host)
    // The page must not choose the text of this dialog.
    message: leaving ? qsTr("Your changes may be lost.") : request.message
    acceptText: leaving ? qsTr("Leave") : qsTr("OK")
    rejectText: leaving ? qsTr("Stay")
        : type === JavaScriptDialogRequest.DialogTypeAlert ? "" : qsTr("Cancel")
    firstFocus: prompting ? answer : null

    onAccepted: dialog.request.dialogAccept(answer.text)
    onRejected: dialog.request.dialogReject()

    CardField {
        id: answer

        Layout.fillWidth: true
        em: dialog.em
        visible: dialog.prompting
        text: dialog.view.shortened(dialog.request.defaultText)
        Component.onCompleted: selectAll()
    }
}
