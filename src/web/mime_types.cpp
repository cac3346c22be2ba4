#include "web/mime_types.h"

#include <QLatin1StringView>

#include <algorithm>

namespace marlune {

namespace {

struct MimeType {
    QLatin1StringView extension;
    QLatin1StringView type;
};

// No text can end with two of these, so their order does not matter.
constexpr MimeType mime_types[] = {
    {QLatin1StringView(".css"), QLatin1StringView("text/css")},
    {QLatin1StringView(".gif"), QLatin1StringView("image/gif")},
    {QLatin1StringView(".htm"), QLatin1StringView("text/html")},
    {QLatin1StringView(".html"), QLatin1StringView("text/html")},
    {QLatin1StringView(".ico"), QLatin1StringView("image/x-icon")},
    {QLatin1StringView(".jpeg"), QLatin1StringView("image/jpeg")},
    {QLatin1StringView(".jpg"), QLatin1StringView("image/jpeg")},
    {QLatin1StringView(".js"), QLatin1StringView("application/javascript")},
    {QLatin1StringView(".json"), QLatin1StringView("application/json")},
    {QLatin1StringView(".mp3"), QLatin1StringView("audio/mpeg")},
    {QLatin1StringView(".mp4"), QLatin1StringView("video/mp4")},
    {QLatin1StringView(".ogg"), QLatin1StringView("audio/ogg")},
    {QLatin1StringView(".pdf"), QLatin1StringView("application/pdf")},
    {QLatin1StringView(".png"), QLatin1StringView("image/png")},
    // An image container of games, whose content is a PNG.
    {QLatin1StringView(".sorel"), QLatin1StringView("image/png")},
    {QLatin1StringView(".svg"), QLatin1StringView("image/svg+xml")},
    {QLatin1StringView(".txt"), QLatin1StringView("text/plain")},
    {QLatin1StringView(".wav"), QLatin1StringView("audio/wav")},
    {QLatin1StringView(".xml"), QLatin1StringView("application/xml")},
    {QLatin1StringView(".zip"), QLatin1StringView("application/zip")},
};

}  // namespace

QString mime_type_for(const QString& text)
{
    const auto* const found = std::ranges::find_if(mime_types, [&](const MimeType& row) {
        return text.endsWith(row.extension, Qt::CaseInsensitive);
    });
    if (found == std::end(mime_types))
        return QStringLiteral("application/octet-stream");
    return found->type;
}

}  // namespace marlune
