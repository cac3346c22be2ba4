#pragma once

#include <QtGlobal>

namespace marlune {

/** The engine is one after that of Qt 6.8. What is done for such ones was seen with that of 6.11. */
constexpr bool engine_is_new = QT_VERSION >= QT_VERSION_CHECK(6, 9, 0);

}  // namespace marlune
