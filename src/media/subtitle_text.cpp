#include "media/subtitle_text.h"

#include "views/short_text.h"

#include <QRegularExpression>

#include <algorithm>

namespace marlune {

namespace {

constexpr qsizetype most_characters = 2'000;
constexpr qsizetype most_lines = 40;

// The number of characters that are read: formatting may be longer than the text.
constexpr qsizetype most_read = 20'000;

}  // namespace

QString plain_subtitle(const QString& text)
{
    // The format into which FFmpeg converts all others: "{\b1}bold{\b0}", with "\h" for a
    // hard space.
    static const QRegularExpression marks(QStringLiteral(R"(\{\\[^}]*\})"));
    QString plain = text.first(std::min(text.size(), most_read));
    plain.remove(marks);
    plain.replace(QLatin1StringView("\\h"), QLatin1StringView(" "));
    return shortened(plain, most_characters, most_lines);
}

}  // namespace marlune
