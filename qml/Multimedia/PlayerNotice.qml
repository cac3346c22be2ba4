pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia
import Multimedia // qmllint disable unused-imports

/*!
    The card that is shown instead of a picture: the source is loading, it cannot be played, it has
    no picture, or there is none.
*/
Notice {
    id: notice

    required property Playback playback

    readonly property int status: playback.status
    readonly property bool empty: !failed && !playback.hasSource
    readonly property bool soundOnly: !failed && !waiting && !empty && !playback.hasVideo

    function reason(error: int): string {
        switch (error) {
        case MediaPlayer.FormatError: return qsTr("This format cannot be played");
        case MediaPlayer.NetworkError: return qsTr("A network error occurred");
        case MediaPlayer.AccessDeniedError: return qsTr("Access is denied");
        default: return qsTr("The source cannot be opened");
        }
    }

    icon: failed ? "error" : waiting ? "hourglass" : empty ? "" : "audio_track"
    words: failed ? reason(playback.error)
        : status === MediaPlayer.LoadingMedia ? qsTr("Loading \u2026")
        : waiting ? qsTr("Buffering \u2026 %1 %").arg(Math.round(playback.bufferProgress * 100))
        : empty ? qsTr("Nothing to play") : playback.title || playback.name
    details: failed ? playback.errorString : soundOnly ? playback.author : ""
    failed: playback.error !== MediaPlayer.NoError
        || status === MediaPlayer.InvalidMedia
    waiting: !failed && (status === MediaPlayer.LoadingMedia
        || status === MediaPlayer.StalledMedia
        || (status === MediaPlayer.BufferingMedia && playback.bufferProgress < 1))
    visible: failed || empty || soundOnly || (waiting && waitedLong)
}
