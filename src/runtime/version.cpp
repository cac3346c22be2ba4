#include "runtime/version.h"

namespace marlune {

const char* const full_version = MARLUNE_FULL_VERSION;

}  // namespace marlune
