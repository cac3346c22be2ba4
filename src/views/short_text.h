#pragma once

#include <QString>
#include <QStringView>

namespace marlune {

/**
 * The text, or its beginning and an ellipsis where it has more UTF-16 units or lines than given. For
 * what comes from a page or a file: to lay out or copy a text of 100 MB takes minutes.
 */
QString shortened(QStringView text, qsizetype units, qsizetype lines);

}  // namespace marlune
