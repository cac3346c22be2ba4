#pragma once

#include <QString>

namespace marlune {

/** Hours, minutes and seconds with two digits each, or more: "01:02:05", "100:00:00". */
QString time_text(qint64 seconds);

}  // namespace marlune
