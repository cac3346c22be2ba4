#include "media/time_text.h"

namespace marlune {

namespace {

constexpr qint64 seconds_an_hour = 3600;
constexpr qint64 seconds_a_minute = 60;

}  // namespace

QString time_text(qint64 seconds)
{
    const qint64 hours = seconds / seconds_an_hour;
    const qint64 minutes = (seconds - seconds_an_hour * hours) / seconds_a_minute;
    const qint64 rest = seconds - seconds_a_minute * (seconds / seconds_a_minute);
    constexpr int width = 2, base = 10;
    return QStringLiteral("%1:%2:%3")
        .arg(hours, width, base, QLatin1Char('0'))
        .arg(minutes, width, base, QLatin1Char('0'))
        .arg(rest, width, base, QLatin1Char('0'));
}

}  // namespace marlune
