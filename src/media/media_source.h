#pragma once

#include <QString>
#include <QUrl>

namespace marlune {

/** The kinds of file that players distinguish. */
enum class FileKind {
    File,     // or a block device, which is read in the same way
    Other,    // a pipe, a terminal, a directory
    Missing,  // or not accessible
    Unknown,  // the system has not answered in time
};

/**
 * Returns the kind of a file. Waits for a short time at most: access to a network share whose
 * server is gone blocks.
 */
FileKind kind_of(const QString& path);

/** A source that the host has set. */
struct MediaSource {
    QUrl url;
    // True if opening or reading the source could block forever, and the player with it.
    bool is_refused = false;
};

/** Converts a URL or a path. */
MediaSource to_source(const QString& text);

}  // namespace marlune
