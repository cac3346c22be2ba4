import QtQuick

// Reports what its context offers when a key is pressed.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // qmllint disable unqualified
    readonly property var ctxObject: ctx
    readonly property var viewObject: view
    readonly property string addonPath: PATH_ADDON
    // qmllint enable unqualified

    function report(name: string, value: string) {
        javaScriptConsoleMessage(0, name + "=" + value, 0, "ContextProbe");
    }

    focus: true
    Keys.onPressed: {
        report("ctx is view", String(ctxObject === viewObject));
        report("PATH_ADDON", addonPath);
        report("name", viewObject.objectName);
        report("version", viewObject.version);
        report("gpuName", viewObject.gpuName);
        report("resolution", viewObject.resolution.width + "x" + viewObject.resolution.height);
        report("framesRendered", viewObject.framesRendered);
    }
}
