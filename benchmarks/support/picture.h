#pragma once

#include <cstdint>

namespace marlune::bench {

/** What a view is to draw: the scene at a size in px, with or without smaller mip levels. */
struct Picture {
    uint32_t width = 1280;
    uint32_t height = 720;
    bool mipmaps = false;
};

}  // namespace marlune::bench
