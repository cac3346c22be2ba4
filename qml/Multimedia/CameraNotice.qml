pragma ComponentBehavior: Bound

import QtQuick
// Imported under a name, because a component of this module has the same name as Qt's Camera.
import QtMultimedia as Media
import Multimedia // qmllint disable unused-imports

/*!
    The card that is shown instead of a camera's picture: there is no camera, it is off, or it does
    not work.
*/
Notice {
    id: notice

    required property Media.Camera camera
    required property bool anyCamera // this machine has at least one
    required property bool unplugged
    required property bool seen // its picture is shown

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
