#pragma once

#include "support/gpu.h"
#include "support/vulkan/kit.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace marlune::bench {

struct Colour {
    uint8_t red, green, blue, alpha;
    bool operator==(const Colour&) const = default;
};

/**
 * Reads single pixels of the textures that both sides have drawn, like a host that samples them.
 * Uses the device's queue: do not use it while a view draws.
 */
class PixelReader {
public:
    explicit PixelReader(const Gpu& gpu);

    /** Returns the pixel at (x, y) of a texture in the layout of a colour attachment. */
    Colour read(uint64_t texture, int32_t x, int32_t y);
    /**
     * Returns the pixels at up to 16 positions of the texture. They stay valid until the next call.
     */
    std::span<const Colour> read(uint64_t texture, std::span<const VkOffset3D> places);

private:
    static constexpr std::size_t most_pixels = 16;

    vulkan::ReadableBuffer buffer_;
    vulkan::TextureReader reader_;
};

}  // namespace marlune::bench
