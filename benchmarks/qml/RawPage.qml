pragma ComponentBehavior: Bound

import QtQuick
import QtWebChannel
import QtWebEngine

/*!
    A page as somebody would show it who wanted that and nothing else. Its host's object comes by
    \c service, and is the one on the channel.
*/
WebEngineView {
    id: root

    required property var service

    backgroundColor: "transparent"
    webChannel: WebChannel {}

    onJavaScriptConsoleMessage: (level, message) => root.service.take_message(level, message)
}
