pragma ComponentBehavior: Bound

import QtQuick
// By a name of its own: a component of this module is called as Qt's camera is.
import QtMultimedia as Media
import Multimedia // qmllint disable unused-imports

/*!
    What there is to say instead of a camera's picture: that there is no camera, that it is off, or why
    it does not work.
*/
Notice {
    id: notice

    required property Media.Camera camera
    required property bool anyCamera // this machine has one
    required property bool unplugged
    required property bool seen // its picture is there

    readonly property string name: notice.camera?.cameraDevice.description ?? ""
    readonly property bool active: notice.camera?.active ?? false

    failed: !unplugged && !seen && (camera?.error ?? Media.Camera.NoError) !== Media.Camera.NoError
    waiting: !unplugged && !failed && !seen && active
    icon: failed ? "error" : waiting ? "hourglass" : active && !unplugged ? "camera" : "camera_off"
    words: !camera && !anyCamera ? qsTr("No camera found")
        : !camera ? qsTr("No camera chosen")
        : unplugged ? qsTr("The camera has been unplugged")
        : failed ? qsTr("The camera does not work")
        : waiting ? qsTr("Starting \u2026") : qsTr("The camera is off")
    details: failed && camera.errorString !== "" ? camera.errorString : name
    visible: waiting ? waitedLong : !active || failed || unplugged
}
