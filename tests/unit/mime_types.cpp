#include "web/mime_types.h"

#include <gtest/gtest.h>

#include <utility>

namespace marlune::test {

TEST(MimeTypes, follow_the_extension)
{
    const std::pair<const char*, const char*> expected[] = {
        {".html", "text/html"},        {".htm", "text/html"},
        {".css", "text/css"},          {".js", "application/javascript"},
        {".json", "application/json"}, {".png", "image/png"},
        {".jpg", "image/jpeg"},        {".jpeg", "image/jpeg"},
        {".gif", "image/gif"},         {".svg", "image/svg+xml"},
        {".pdf", "application/pdf"},   {".xml", "application/xml"},
        {".txt", "text/plain"},        {".mp4", "video/mp4"},
        {".mp3", "audio/mpeg"},        {".wav", "audio/wav"},
        {".ogg", "audio/ogg"},         {".ico", "image/x-icon"},
        {".zip", "application/zip"},   {".sorel", "image/png"},
    };
    for (const auto& [extension, type] : expected) {
        const QString url =
            QStringLiteral("res://pack/dir/file%1").arg(QLatin1StringView(extension));
        EXPECT_EQ(mime_type_for(url), QLatin1StringView(type)) << extension;
        EXPECT_EQ(mime_type_for(url.toUpper()), QLatin1StringView(type))
            << extension << " in capitals";
    }
}

TEST(MimeTypes, are_unknown_when_the_text_ends_in_no_known_extension)
{
    for (const char* const text :
         {"", "res://x/a.css?v=1", "res://x/a.png#top", "res://x/file", "html", "res://x/a.html5"})
        EXPECT_EQ(mime_type_for(QString::fromLatin1(text)), u"application/octet-stream") << text;
}

}  // namespace marlune::test
