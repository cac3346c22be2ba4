#pragma once

#include <QString>

namespace marlune {

/**
 * Returns a subtitle as plain text: without the formatting that decoders leave in it, and with at
 * most 2,000 characters and 40 lines. Callable on any thread.
 */
QString plain_subtitle(const QString& text);

}  // namespace marlune
