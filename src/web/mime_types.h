#pragma once

#include <QString>

namespace marlune {

/** The MIME type for a text that ends in a known extension, in any case; else "application/octet-stream". */
QString mime_type_for(const QString& text);

}  // namespace marlune
