#pragma once

#include <QString>

namespace marlune {

/**
 * Returns the MIME type for a text that ends with a known extension, ignoring case; otherwise
 * "application/octet-stream".
 */
QString mime_type_for(const QString& text);

}  // namespace marlune
