#pragma once

#include "support/picture.h"
#include "support/pixel_reader.h"

#include <cstdint>
#include <optional>

namespace marlune::bench {

/**
 * Pictures show their number in cells across their middle, where no controls are: a white one, a black one,
 * and its bits.
 */
constexpr uint32_t number_cells = 16;

/** The number that a texture of this size shows; nothing when it shows none. */
std::optional<int> shown_number(PixelReader& reader, uint64_t texture, Picture size);

}  // namespace marlune::bench
