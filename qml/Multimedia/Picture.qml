import QtMultimedia

/*! A picture that fills the scene in the mode that the host has set by number. */
VideoOutput {
    required property int mode

    anchors.fill: parent
    fillMode: {
        switch (mode) {
        case 0: return VideoOutput.Stretch;
        case 2: return VideoOutput.PreserveAspectCrop;
        default: return VideoOutput.PreserveAspectFit;
        }
    }
}
