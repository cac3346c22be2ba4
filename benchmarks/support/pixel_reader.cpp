#include "support/pixel_reader.h"

#include <stdexcept>
#include <vector>

namespace marlune::bench {

PixelReader::PixelReader(const Gpu& gpu)
    : buffer_(gpu.physical_device, gpu.device, most_pixels * sizeof(Colour)), reader_(gpu.device)
{
}

std::span<const Colour> PixelReader::read(uint64_t texture, std::span<const VkOffset3D> places)
{
    if (places.size() > most_pixels)
        throw std::runtime_error("too many pixels to read at once");
    std::vector<VkBufferImageCopy> regions;
    for (const VkOffset3D place : places)
        regions.push_back({.bufferOffset = regions.size() * sizeof(Colour),
                           .imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1},
                           .imageOffset = place,
                           .imageExtent = {1, 1, 1}});
    reader_.copy(texture, regions, buffer_);
    return {reinterpret_cast<const Colour*>(buffer_.bytes().data()), places.size()};
}

Colour PixelReader::read(uint64_t texture, int32_t x, int32_t y)
{
    const VkOffset3D place{x, y, 0};
    return read(texture, {&place, 1}).front();
}

}  // namespace marlune::bench
