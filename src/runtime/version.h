#pragma once

namespace marlune {

/** The library's version with its build metadata, as "1.2.3+0123abc". The build system sets it. */
extern const char* const full_version;

}  // namespace marlune
