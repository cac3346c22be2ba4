pragma ComponentBehavior: Bound

import QtQuick
// Imported under a name, because this component has the same name as Qt's Camera.
import QtMultimedia as Media
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a camera view: the picture, or a text that explains why there is none. The scene
    does not switch the camera on; the host does. Areas without a picture are transparent.
*/
MediaScene {
    id: root

    readonly property Media.Camera camera: root.host?.camera ?? null
    readonly property bool active: root.camera?.active ?? false
    readonly property bool plugged: {
        if (!root.camera)
            return false;
        const id = String(root.camera.cameraDevice.id);
        return devices.videoInputs.some(device => String(device.id) === id);
    }

    // The camera was unplugged while it was on. Once plugged in again, it gives no picture by
    // itself.
    property bool lost
    // The picture shows what the camera sees now, not a frame from before it was switched off.
    property bool current

    onActiveChanged: root.current = false
    onCameraChanged: {
        root.lost = false;
        root.current = false;
    }
    onPluggedChanged: {
        if (root.plugged)
            return;
        root.lost = root.active;
        root.current = false;
    }

    Media.MediaDevices {
        id: devices
    }

    Media.CaptureSession {
        camera: root.camera
        videoOutput: picture
    }

    Connections {
        target: root.camera

        function onErrorOccurred(): void { root.current = false; }
    }

    Connections {
        target: picture.videoSink
        enabled: root.active && root.plugged && !root.current

        function onVideoFrameChanged(): void {
            // Switching the camera on or off sends an empty frame first.
            if (picture.videoSink.videoSize.width <= 0)
                return;
            root.lost = false;
            root.current = true;
        }
    }

    Picture {
        id: picture

        visible: root.active && root.current
        mode: root.host?.fill_mode ?? 1
    }

    CameraNotice {
        id: notice

        anchors.fill: parent
        em: root.em
        camera: root.camera
        anyCamera: devices.videoInputs.length > 0
        unplugged: root.camera !== null && (!root.plugged || root.lost)
        seen: root.current
    }
}
