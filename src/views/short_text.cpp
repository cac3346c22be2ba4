#include "views/short_text.h"

#include <algorithm>

namespace marlune {

namespace {

bool ends_line(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar::LineSeparator
        || unit == QChar::ParagraphSeparator;
}

/** The end of the first `lines` lines, without the last line break. */
qsizetype end_of_lines(QStringView text, qsizetype lines)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && i > 0 && text[i - 1] == u'\r')
            continue;
        if (ends_line(text[i]) && --lines <= 0)
            return i;
    }
    return text.size();
}

}  // namespace

QString shortened(QStringView text, qsizetype units, qsizetype lines)
{
    qsizetype kept = end_of_lines(text.first(std::clamp(units, qsizetype(0), text.size())), lines);
    if (kept == text.size())
        return text.toString();
    if (kept > 0 && text[kept - 1].isHighSurrogate())
        --kept;
    return text.first(kept).toString() + u'\u2026';
}

}  // namespace marlune
