pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtWebEngine
import Web // qmllint disable unused-imports

/*!
    What a page asks by alert(), confirm() and prompt(), and before it is left.
*/
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
    // Pages may not choose the words of this one.
    message: leaving ? qsTr("What you have changed may be lost.") : request.message
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
