pragma ComponentBehavior: Bound

import QtQuick
// By a name of its own: this component is called as Qt's camera is.
import QtMultimedia as Media
import Multimedia // qmllint disable unused-imports

/*!
    The scene of a camera: its picture, or in words why there is none. It does not switch the camera on,
    which is the host's to do. What the picture leaves free is transparent.
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

    // It was taken away while it was on; there again, it gives no picture by itself.
    property bool lost
    // The picture is of what the camera sees now, and not of what it saw before it was switched off.
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
            // Switching on and off sends an empty frame ahead.
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
