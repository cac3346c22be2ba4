#pragma once

#include <string>

namespace marlune::bench {

/** Returns the URL of a clip of make_clips.sh. Makes all clips if they do not exist. */
std::string clip_url(const std::string& name);

}  // namespace marlune::bench
