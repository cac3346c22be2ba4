#pragma once

#include <QString>

namespace marlune {

/** Returns hours, minutes and seconds with at least two digits each: "01:02:05", "100:00:00". */
QString time_text(qint64 seconds);

}  // namespace marlune
