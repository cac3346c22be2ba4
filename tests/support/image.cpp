#include "support/image.h"

#include <stb_image_write.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace marlune::test {

namespace {

std::string file_name_of_running_test()
{
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    if (!test)
        return "outside_of_tests";
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::replace(name.begin(), name.end(), '/', '-');
    return name;
}

uint8_t straight(uint8_t premultiplied, uint8_t alpha)
{
    if (alpha == 0)
        return 0;
    return static_cast<uint8_t>(std::min(255, (premultiplied * 255 + alpha / 2) / alpha));
}

}  // namespace

std::ostream& operator<<(std::ostream& out, Colour colour)
{
    return out << "rgba(" << int(colour.r) << ", " << int(colour.g) << ", " << int(colour.b) << ", "
               << int(colour.a) << ")";
}

bool is_close(Colour left, Colour right, int tolerance)
{
    const auto near = [tolerance](int a, int b) { return std::abs(a - b) <= tolerance; };
    return near(left.r, right.r) && near(left.g, right.g) && near(left.b, right.b)
        && near(left.a, right.a);
}

Rect Rect::inside(uint32_t margin) const
{
    if (width <= 2 * margin || height <= 2 * margin)
        throw std::invalid_argument("no pixel is left inside that margin");
    return {x + margin, y + margin, width - 2 * margin, height - 2 * margin};
}

Image::Image(uint32_t width, uint32_t height, std::vector<uint8_t> rgba)
    : width_(width), height_(height), rgba_(std::move(rgba))
{
    if (rgba_.size() != size_t(width) * height * 4)
        throw std::invalid_argument("the bytes do not make a picture of that size");
}

Colour Image::pixel(uint32_t x, uint32_t y) const
{
    if (x >= width_ || y >= height_)
        throw std::out_of_range("pixel outside of the picture");
    const uint8_t* p = &rgba_[(size_t(y) * width_ + x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

void Image::save_png(const std::filesystem::path& path) const
{
    std::vector<uint8_t> pixels = rgba_;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        for (size_t channel = i; channel < i + 3; ++channel)
            pixels[channel] = straight(pixels[channel], pixels[i + 3]);
    }
    std::filesystem::create_directories(path.parent_path());
    if (!stbi_write_png(path.c_str(), int(width_), int(height_), 4, pixels.data(), int(width_ * 4)))
        throw std::runtime_error("cannot write " + path.string());
}

testing::AssertionResult every_pixel_in(const Image& image, Rect area, Colour wanted,
                                        const std::string& rule, int tolerance)
{
    for (uint32_t y = area.y; y < area.y + area.height; ++y) {
        for (uint32_t x = area.x; x < area.x + area.width; ++x) {
            const Colour found = image.pixel(x, y);
            if (!is_close(found, wanted, tolerance)) {
                return testing::AssertionFailure()
                    << rule << ": pixel (" << x << ", " << y << ") is " << found << ", not "
                    << wanted << " within " << tolerance << "; see " << keep_picture(image);
            }
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult shows_something(const Image& image, const std::string& rule)
{
    const Colour first = image.pixel(0, 0);
    for (uint32_t y = 0; y < image.height(); ++y) {
        for (uint32_t x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != first)
                return testing::AssertionSuccess();
        }
    }
    return testing::AssertionFailure() << rule << ": the whole image is " << first;
}

std::filesystem::path keep_picture(const Image& image)
{
    static int count = 0;
    const std::string name = file_name_of_running_test() + "-" + std::to_string(++count) + ".png";
    const std::filesystem::path path = std::filesystem::current_path() / "results" / name;
    image.save_png(path);
    return path;
}

}  // namespace marlune::test
