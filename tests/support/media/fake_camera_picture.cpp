#include "support/media/fake_camera_picture.h"

namespace marlune::test {

namespace {

struct Yuv {
    uint8_t y, u, v;
};

/** Colours as in standard-definition television: BT.601 in the limited range. */
Yuv to_yuv(Colour colour)
{
    const double r = colour.r / 255.0, g = colour.g / 255.0, b = colour.b / 255.0;
    return {uint8_t(16.5 + 65.481 * r + 128.553 * g + 24.966 * b),
            uint8_t(128.5 - 37.797 * r - 74.203 * g + 112.0 * b),
            uint8_t(128.5 + 112.0 * r - 93.786 * g - 18.214 * b)};
}

/** Two neighbouring pixels share their colour, so `area` must begin and end at even columns. */
void fill(uint8_t* picture, Rect area, Colour colour)
{
    const Yuv yuv = to_yuv(colour);
    for (uint32_t y = area.y; y < area.y + area.height; ++y) {
        uint8_t* pixels = picture + y * CAMERA_BYTES_A_ROW + area.x * 2;
        for (uint32_t x = 0; x < area.width; x += 2, pixels += 4) {
            pixels[0] = pixels[2] = yuv.y;
            pixels[1] = yuv.u;
            pixels[3] = yuv.v;
        }
    }
}

}  // namespace

void draw_camera_picture(uint8_t* picture, Colour border, uint32_t number)
{
    constexpr uint32_t WIDTH = CAMERA_WIDTH / 2, HEIGHT = CAMERA_HEIGHT / 2;
    constexpr uint32_t INNER_WIDTH = WIDTH - CAMERA_BORDER, INNER_HEIGHT = HEIGHT - CAMERA_BORDER;
    fill(picture, {0, 0, CAMERA_WIDTH, CAMERA_HEIGHT}, border);
    fill(picture, {CAMERA_BORDER, CAMERA_BORDER, INNER_WIDTH, INNER_HEIGHT}, RED);
    fill(picture, {WIDTH, CAMERA_BORDER, INNER_WIDTH, INNER_HEIGHT}, GREEN);
    fill(picture, {CAMERA_BORDER, HEIGHT, INNER_WIDTH, INNER_HEIGHT}, BLUE);
    fill(picture, {WIDTH, HEIGHT, INNER_WIDTH, INNER_HEIGHT}, WHITE);
    Rect cell = CAMERA_NUMBER;
    cell.width /= CAMERA_NUMBER_BITS;
    for (uint32_t bit = CAMERA_NUMBER_BITS; bit-- > 0; cell.x += cell.width)
        fill(picture, cell, number >> bit & 1 ? WHITE : BLACK);
}

}  // namespace marlune::test
