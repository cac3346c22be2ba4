#pragma once

#include <QString>
#include <QStringView>

namespace marlune {

/**
 * The text, cut with an ellipsis if it has more UTF-16 units or lines. For text from a page or a
 * file: laying out or copying 100 MB takes minutes.
 */
QString shortened(QStringView text, qsizetype units, qsizetype lines);

}  // namespace marlune
