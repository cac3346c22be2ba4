pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtWebEngine
import Web // qmllint disable unused-imports

/*! Asks for the user name and password that a server or a proxy requires. */
DialogCard {
    id: dialog

    required property AuthenticationDialogRequest request

    readonly property bool proxy:
        request.type === AuthenticationDialogRequest.AuthenticationTypeProxy
    // Without the user name that a link may contain before the host, since it could look like a
    // host.
    readonly property string server: request.url.toString()
        .replace(/^(\w+:\/\/)(?:[^\/?#]*@)?([^\/?#]*).*$/, "$1$2")

    title: qsTr("Sign in")
    message: proxy ? qsTr("The proxy %1 asks for a name and a password.").arg(request.proxyHost)
        : qsTr("%1 asks for a name and a password.").arg(server)
    acceptText: qsTr("Sign in")
    firstFocus: user

    onAccepted: dialog.request.dialogAccept(user.text, password.text)
    onRejected: dialog.request.dialogReject()

    Text {
        Layout.fillWidth: true
        visible: text !== ""
        text: dialog.view.shortened(dialog.request.realm)
        textFormat: Text.PlainText
        color: "#a9c6dd"
        font.pixelSize: dialog.em * 0.9
        elide: Text.ElideRight
    }

    CardField {
        id: user

        Layout.fillWidth: true
        em: dialog.em
        placeholderText: qsTr("Name")
        // Enter moves on to the password while that is empty.
        Keys.onReturnPressed: event => {
            event.accepted = password.text === "";
            if (event.accepted)
                password.forceActiveFocus();
        }
    }

    CardField {
        id: password

        Layout.fillWidth: true
        em: dialog.em
        placeholderText: qsTr("Password")
        echoMode: TextInput.Password
    }
}
