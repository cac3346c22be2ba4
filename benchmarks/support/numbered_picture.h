#pragma once

#include "support/picture.h"
#include "support/pixel_reader.h"

#include <cstdint>
#include <optional>

namespace marlune::bench {

/**
 * Frames show their number in cells across their middle, where no controls are: a white cell, a
 * black cell, and the bits of the number.
 */
constexpr uint32_t number_cells = 16;

/** Returns the number that a texture of this size shows; nothing if there is none. */
std::optional<int> shown_number(PixelReader& reader, uint64_t texture, Picture size);

}  // namespace marlune::bench
