pragma ComponentBehavior: Bound

import QtQuick
import QtMultimedia

/*! The state of the view's player in typed properties, and the functions that the controls call. */
QtObject {
    id: playback

    // The view; null in a previewer.
    required property var view

    readonly property var player: view?.player ?? null
    readonly property var output: view?.audioOutput ?? null

    readonly property real position: player?.position ?? 0
    readonly property real duration: player?.duration ?? 0
    readonly property bool seekable: (player?.seekable ?? false) && duration > 0
    readonly property bool playing: player?.playing ?? false
    readonly property int status: player?.mediaStatus ?? MediaPlayer.NoMedia
    readonly property int error: player?.error ?? MediaPlayer.NoError
    readonly property string errorString: player?.errorString ?? ""
    readonly property real bufferProgress: player?.bufferProgress ?? 0
    readonly property bool hasVideo: player?.hasVideo ?? false
    readonly property bool hasSource: String(player?.source ?? "") !== ""
    readonly property bool ended: status === MediaPlayer.EndOfMedia

    readonly property real volume: output?.volume ?? 0
    readonly property bool muted: output?.muted ?? false
    readonly property bool silent: muted || volume === 0

    readonly property real rate: player?.playbackRate ?? 1
    readonly property bool loops: (player?.loops ?? 1) !== 1
    readonly property int fillMode: view?.fill_mode ?? VideoOutput.PreserveAspectFit

    readonly property list<string> audioTracks: names(player?.audioTracks ?? [])
    readonly property list<string> subtitleTracks: names(player?.subtitleTracks ?? [])
    // The player does not notify changes of these; updateTracks() reads them.
    property int audioTrack: -1
    property int subtitleTrack: -1

    // The source's name as the host wants it displayed. The view has a separate signal for it.
    property string name
    readonly property string title: line(player?.metaData.stringValue(MediaMetaData.Title) ?? "")
    readonly property string author: {
        const metaData = player?.metaData;
        return playback.line(metaData?.stringValue(MediaMetaData.ContributingArtist)
                             || metaData?.stringValue(MediaMetaData.Author) || "");
    }

    // A file can contain texts of any length: only one line is shown.
    function line(text: string): string {
        return playback.view?.shortened(text, 200, 1) ?? text;
    }

    function names(tracks: var): list<string> {
        const list = [];
        for (let i = 0; i < tracks.length; ++i) {
            const title = playback.line(tracks[i].stringValue(MediaMetaData.Title));
            const language = playback.line(tracks[i].stringValue(MediaMetaData.Language));
            const known = [language, title].filter(text => text !== "").join(" \u2013 ");
            list.push(known !== "" ? known : qsTr("Track %1").arg(i + 1));
        }
        return list;
    }

    function updateName(): void {
        const view = playback.view;
        if (!view)
            return;
        playback.name = playback.line(view.ui_controls_source_humanized
                                      ? view.path_or_url_humanized : view.path_or_url);
    }

    function updateTracks(): void {
        playback.audioTrack = playback.player?.activeAudioTrack ?? -1;
        playback.subtitleTrack = playback.player?.activeSubtitleTrack ?? -1;
    }

    function timeText(ms: real): string {
        return playback.view?.playing_position_to_str(Math.floor(Math.max(0, ms) / 1000)) ?? "00:00:00";
    }

    function toggle(): void {
        if (playback.playing)
            playback.view?.pause();
        else
            playback.view?.play();
    }

    function seek(ms: real): void {
        if (playback.seekable)
            playback.view.set_position(Math.round(Math.max(0, Math.min(playback.duration, ms))));
    }

    function step(ms: real): void {
        playback.seek(playback.position + ms);
    }

    function setVolume(volume: real): void {
        if (!playback.output)
            return;
        playback.output.volume = Math.max(0, Math.min(1, volume));
        // A user who changes the volume wants to hear the sound.
        if (volume > 0)
            playback.view.unmute();
    }

    function toggleMuted(): void {
        if (playback.muted)
            playback.view?.unmute();
        else
            playback.view?.mute();
    }

    function setRate(rate: real): void {
        if (playback.player)
            playback.player.playbackRate = rate;
    }

    function setLoops(on: bool): void {
        if (playback.player)
            playback.player.loops = on ? MediaPlayer.Infinite : 1;
    }

    function setAudioTrack(track: int): void {
        if (playback.player)
            playback.player.activeAudioTrack = track;
        playback.updateTracks();
    }

    function setSubtitleTrack(track: int): void {
        playback.view?.set_active_subtitle_track(track);
    }

    function setFillMode(mode: int): void {
        playback.view?.set_fill_mode(mode);
    }

    onPlayerChanged: playback.updateTracks()

    readonly property Connections viewWatch: Connections {
        target: playback.view
        ignoreUnknownSignals: true

        function onActiveTracksChanged(): void {
            playback.updateTracks();
        }

        // The view counts the tracks again when a source is loaded and when playback begins.
        function onCountAudioTracksChanged(): void {
            playback.updateTracks();
        }

        function onM_ui_controls_source_humanizedChanged(): void {
            playback.updateName();
        }

        function onM_path_or_urlChanged(): void {
            playback.updateName();
        }
    }

    Component.onCompleted: {
        playback.updateName();
        playback.updateTracks();
    }
}
