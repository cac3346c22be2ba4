pragma ComponentBehavior: Bound
import QtQuick
import QtWebEngine

// A page of the "res" scheme in the real engine. It is made when frames are being drawn: the engine's
// GPU thread and a render control that is only being initialized would meet in the Vulkan loader.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    Timer {
        running: true
        interval: 100
        onTriggered: page.active = true
    }

    Loader {
        id: page

        anchors.fill: parent
        active: false
        sourceComponent: WebEngineView {
            url: "res://pack/"
            onLoadingChanged: request => {
                if (request.status === WebEngineView.LoadFailedStatus)
                    root.javaScriptConsoleMessage(2, "failed", 0, request.url.toString());
            }
            onJavaScriptConsoleMessage: (level, message, line, source) =>
                root.javaScriptConsoleMessage(level, message, line, source)
        }
    }
}
