#pragma once

#include "marlune/values.h"

#include <QLatin1StringView>

namespace marlune::db {

/** The name by which method signatures tell pages of a type; empty for a code that is none. */
QLatin1StringView type_name(VariantTypeStd code);

}  // namespace marlune::db
