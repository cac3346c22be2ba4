#pragma once

#include <QString>

namespace marlune {

/**
 * A subtitle as people read it: without the marks for its looks that decoders leave in it, and of no more
 * than 2,000 characters and 40 lines. For any thread.
 */
QString plain_subtitle(const QString& text);

}  // namespace marlune
