#include "support/numbered_picture.h"

#include <array>
#include <span>

namespace marlune::bench {

namespace {

constexpr int darkest_white = 200, brightest_black = 55;

/** Returns 1 for white, 0 for black, and nothing for other colours. */
std::optional<int> bit_of(Colour colour)
{
    const int sum = colour.red + colour.green + colour.blue;
    if (sum > 3 * darkest_white)
        return 1;
    if (sum < 3 * brightest_black && colour.alpha == 255)
        return 0;
    return std::nullopt;
}

}  // namespace

std::optional<int> shown_number(PixelReader& reader, uint64_t texture, Picture size)
{
    const uint32_t cell = size.width / number_cells;
    const auto middle = static_cast<int32_t>(size.height / 2);
    std::array<VkOffset3D, number_cells> places;
    for (uint32_t i = 0; i < number_cells; ++i)
        places[i] = {static_cast<int32_t>(i * cell + cell / 2), middle, 0};

    const std::span<const Colour> colours = reader.read(texture, places);
    if (bit_of(colours[0]) != 1 || bit_of(colours[1]) != 0)
        return std::nullopt;
    int number = 0;
    for (const Colour& colour : colours.subspan(2)) {
        const std::optional<int> bit = bit_of(colour);
        if (!bit)
            return std::nullopt;
        number = 2 * number + *bit;
    }
    return number;
}

}  // namespace marlune::bench
