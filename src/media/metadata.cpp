#include "media/metadata.h"

#include <QMediaMetaData>
#include <QVariant>

#include <cstddef>
#include <iterator>

namespace marlune {

namespace {

// In the order of QMediaMetaData::Key. The names are constants, because hosts rely on them
// independently of Qt.
constexpr const char* key_names[] = {
    "Title",
    "Author",
    "Comment",
    "Description",
    "Genre",
    "Date",
    "Language",
    "Publisher",
    "Copyright",
    "Url",
    "Duration",
    "MediaType",
    "FileFormat",
    "AudioBitRate",
    "AudioCodec",
    "VideoBitRate",
    "VideoCodec",
    "VideoFrameRate",
    "AlbumTitle",
    "AlbumArtist",
    "ContributingArtist",
    "TrackNumber",
    "Composer",
    "LeadPerformer",
    "ThumbnailImage",
    "CoverArtImage",
    "Orientation",
    "Resolution",
    "HasHdrContent",
};

/** Empty for a key that a later Qt version has added. */
std::string key_name(QMediaMetaData::Key key)
{
    const auto index = static_cast<std::size_t>(key);
    return index < std::size(key_names) ? key_names[index] : "";
}

}  // namespace

std::map<std::string, std::string> to_host(const QMediaMetaData& metadata)
{
    std::map<std::string, std::string> entries;
    for (const QMediaMetaData::Key key : metadata.keys())
        entries[key_name(key)] = metadata.value(key).toString().toStdString();
    return entries;
}

std::vector<std::map<std::string, std::string>> to_host(const QList<QMediaMetaData>& tracks)
{
    std::vector<std::map<std::string, std::string>> maps;
    for (const QMediaMetaData& track : tracks)
        maps.push_back(to_host(track));
    return maps;
}

}  // namespace marlune
