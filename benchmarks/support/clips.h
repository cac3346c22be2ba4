#pragma once

#include <string>

namespace marlune::bench {

/** The URL of a clip that make_clips.sh knows. Makes them all, where they are not there yet. */
std::string clip_url(const std::string& name);

}  // namespace marlune::bench
