pragma ComponentBehavior: Bound

import QtQuick
import QtWebChannel
import QtWebEngine

/*!
    A minimal scene that shows a page. \c service provides its host's object, which is the one on
    the channel.
*/
WebEngineView {
    id: root

    required property var service

    backgroundColor: "transparent"
    webChannel: WebChannel {}

    onJavaScriptConsoleMessage: (level, message) => root.service.take_message(level, message)
}
