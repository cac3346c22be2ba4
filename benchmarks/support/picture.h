#pragma once

#include <cstdint>

namespace marlune::bench {

/** The task of a view: the scene at a size in px, with or without smaller mip levels. */
struct Picture {
    uint32_t width = 1280;
    uint32_t height = 720;
    bool mipmaps = false;
};

}  // namespace marlune::bench
