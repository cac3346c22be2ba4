#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace marlune::test {

struct Colour {
    uint8_t r = 0, g = 0, b = 0, a = 0;

    bool operator==(const Colour&) const = default;
};

std::ostream& operator<<(std::ostream& out, Colour colour);

inline constexpr Colour TRANSPARENT{0, 0, 0, 0};
inline constexpr Colour WHITE{255, 255, 255, 255};
inline constexpr Colour BLACK{0, 0, 0, 255};
inline constexpr Colour RED{255, 0, 0, 255};
inline constexpr Colour GREEN{0, 255, 0, 255};
inline constexpr Colour BLUE{0, 0, 255, 255};

/** True if no channel differs by more than `tolerance`. */
bool is_close(Colour left, Colour right, int tolerance);

struct Rect {
    uint32_t x = 0, y = 0, width = 0, height = 0;

    /** The part that is at least `margin` px away from each side. */
    Rect inside(uint32_t margin) const;
};

/** An image in rows from top to bottom, RGBA with 8 bits a channel. */
class Image {
public:
    Image() = default;
    Image(uint32_t width, uint32_t height, std::vector<uint8_t> rgba);

    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }
    Rect area() const { return {0, 0, width_, height_}; }

    Colour pixel(uint32_t x, uint32_t y) const;
    bool operator==(const Image&) const = default;

    /** PNG stores straight alpha, so this function divides premultiplied colours by their alpha. */
    void save_png(const std::filesystem::path& path) const;

private:
    uint32_t width_ = 0;
    uint32_t height_ = 0;
    std::vector<uint8_t> rgba_;
};

/**
 * Succeeds if every pixel of `area` has the colour `wanted`. Otherwise the message names the broken
 * rule, the first wrong pixel, and the file that contains the image.
 */
testing::AssertionResult every_pixel_in(const Image& image, Rect area, Colour wanted,
                                        const std::string& rule, int tolerance = 1);

/** Succeeds if the image is not of one colour. */
testing::AssertionResult shows_something(const Image& image, const std::string& rule);

/** Writes the image to the folder for results of the running test, and returns its path. */
std::filesystem::path keep_picture(const Image& image);

}  // namespace marlune::test
