#pragma once

#include <QString>
#include <QUrl>

namespace marlune {

/** What a path names, as far as players are concerned. */
enum class FileKind {
    File,     // or a disk, which is read in the same way
    Other,    // a pipe, a terminal, a folder
    Missing,  // or out of reach
    Unknown,  // nobody has answered in time
};

/** Waits a moment at most: a network share whose server has gone keeps whoever asks. */
FileKind kind_of(const QString& path);

/** A source as the host has set it. */
struct MediaSource {
    QUrl url;
    // Opening or reading it might never end, and with it the player.
    bool is_refused = false;
};

/** From a URL, or a path as it is. */
MediaSource to_source(const QString& text);

}  // namespace marlune
