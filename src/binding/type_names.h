#pragma once

#include "marlune/values.h"

#include <QLatin1StringView>

namespace marlune::db {

/** Returns the name of a type in method signatures for pages; empty for an invalid code. */
QLatin1StringView type_name(VariantTypeStd code);

}  // namespace marlune::db
