#pragma once

#include <QtGlobal>

namespace marlune {

/**
 * True for engines after that of Qt 6.8. The workarounds for these engines were tested with Qt
 * 6.11.
 */
constexpr bool engine_is_new = QT_VERSION >= QT_VERSION_CHECK(6, 9, 0);

}  // namespace marlune
