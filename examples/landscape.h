#pragma once

// The background of the head-up display example: a picture that represents the game's own.

#include "game.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace example {

struct Colour {
    double r = 0, g = 0, b = 0;
};

inline Colour mix(Colour from, Colour to, double part)
{
    return {from.r + (to.r - from.r) * part, from.g + (to.g - from.g) * part,
            from.b + (to.b - from.b) * part};
}

inline double step(double from, double to, double value)
{
    const double part = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return part * part * (3 - 2 * part);
}

// Returns a number from 0 to 1 that is always the same for the same position.
inline double random_at(int x, int y)
{
    uint32_t bits = uint32_t(x) * 0x9e3779b9u ^ uint32_t(y) * 0x85ebca6bu;
    bits = (bits ^ bits >> 15) * 0x2c1b3c6du;
    bits = (bits ^ bits >> 12) * 0x297a2d39u;
    return double((bits ^ bits >> 15) & 0xffff) / 0xffff;
}

// An evening on another planet: mountains in haze under a planet with a ring. Lengths are in units
// of the picture's height, from its top left corner.
class Landscape {
public:
    Landscape(double heading, bool is_shot_down) : heading_(heading), is_shot_down_(is_shot_down) {}

    Picture paint(uint32_t width, uint32_t height) const
    {
        Picture picture{width, height, std::vector<uint8_t>(size_t(width) * height * 4)};
        auto byte = picture.rgba.begin();
        for (uint32_t y = 0; y < height; ++y) {
            for (uint32_t x = 0; x < width; ++x) {
                // The game's horizon is in the middle of its screen.
                const double side = (x - width / 2.0) / height;
                const Colour colour = at(side, double(y) / height, 1.5 / height);
                for (const double channel : {colour.r, colour.g, colour.b})
                    *byte++ = uint8_t(std::clamp(channel, 0.0, 255.0));
                *byte++ = 255;
            }
        }
        return picture;
    }

private:
    Colour at(double x, double y, double pixel) const
    {
        Colour colour = sky(x, y);
        colour = with_planet(colour, x, y, pixel);
        for (int ridge = 0; ridge < ridges_; ++ridge)
            colour = with_ridge(colour, ridge, x, y, pixel);
        return with_drone(colour, x, y, pixel);
    }

    Colour sky(double x, double y) const
    {
        constexpr Colour top{14, 13, 44}, middle{74, 44, 116}, low{222, 104, 112},
            horizon{255, 190, 124};
        Colour colour = mix(mix(mix(top, middle, step(0, 0.42, y)), low, step(0.34, 0.6, y)),
                            horizon, step(0.52, 0.68, y));
        const double sun = std::hypot(x + 0.42, (y - 0.62) * 1.6);
        colour = mix(colour, {255, 232, 190}, 0.75 * std::exp(-sun * 5));

        const int column = int(std::floor((x + 3) * 150)), row = int(y * 150);
        const double star = random_at(column, row);
        if (star > 0.985) {
            const double far =
                std::hypot((x + 3) * 150 - column - 0.5, y * 150 - row - 0.5) / (0.1 + 0.2 * star);
            colour = mix(colour, {255, 250, 240},
                         std::exp(-far * far * 3) * step(0.5, 0.05, y) * random_at(row, column));
        }
        return colour;
    }

    Colour with_planet(Colour behind, double x, double y, double pixel) const
    {
        constexpr double radius = 0.2;
        const double px = (x - 0.77 + heading_ * 0.0012) / radius, py = (y - 0.31) / radius;
        const double edge = pixel / radius;
        const double from_centre = std::hypot(px, py);

        // The ring is seen from slightly above: a tilted ellipse.
        const double along = px * 0.94 + py * 0.34, across = (py * 0.94 - px * 0.34) / 0.24;
        const double ring = std::hypot(along, across);
        const double bands = 0.55 + 0.45 * std::sin(ring * 60) * std::sin(ring * 23);
        const double ring_cover = step(1.35, 1.35 + 2 * edge, ring) * step(2.1, 2.0, ring) * 0.55
            * bands * (std::abs(ring - 1.72) < 0.03 ? 0.15 : 1);
        const bool in_front = across > 0;

        Colour colour = behind;
        if (!in_front)
            colour = mix(colour, {255, 214, 180}, ring_cover);
        if (from_centre < 1 + edge) {
            const double pz = std::sqrt(std::max(0.0, 1 - from_centre * from_centre));
            const double light = std::clamp(-0.72 * px + 0.42 * py + 0.42 * pz, 0.0, 1.0);
            const double band = 0.5 + 0.5 * std::sin(across * 2.4 + std::sin(along * 3) * 0.4);
            const Colour lit = mix({232, 140, 120}, {255, 208, 160}, band);
            const double cover = step(1 + edge, 1 - edge, from_centre) * (0.25 + 0.75 * light);
            colour = mix(colour, mix({40, 24, 74}, lit, light), cover);
        }
        if (in_front)
            colour = mix(colour, {255, 214, 180}, ring_cover);
        return colour;
    }

    // The nearer a ridge is, the darker it is and the more it moves as the player turns.
    Colour with_ridge(Colour behind, int ridge, double x, double y, double pixel) const
    {
        const double nearness = double(ridge) / (ridges_ - 1);
        const double shift = x * (2.6 - 1.7 * nearness) + heading_ * (0.004 + 0.02 * nearness);
        double top = 0.62 + 0.3 * nearness * nearness;
        double size = 0.1 + 0.02 * nearness;
        for (int octave = 0, scale = 1; octave < 7; ++octave, scale *= 2, size /= 2.1)
            top -= size * (noise(shift * scale * 1.7, ridge * 16 + octave) - 0.45);

        constexpr Colour far{206, 104, 122}, near{11, 9, 26};
        Colour colour = mix(far, near, std::pow(nearness, 0.55));
        colour = mix(colour, {255, 176, 130}, 0.5 * (1 - nearness) * step(top, top + 0.25, y));
        return mix(behind, colour, step(top - pixel, top + pixel, y));
    }

    // A drone that hovers over the mountains, or its explosion.
    Colour with_drone(Colour behind, double x, double y, double pixel) const
    {
        const double dx = x - 0.003, dy = y - 0.497;
        if (is_shot_down_) {
            const double far = std::hypot(dx, dy);
            const double flames = noise(std::atan2(dy, dx) * 3 + 20, 7) * 0.018;
            const Colour fire = mix({255, 96, 30}, {255, 252, 235}, step(0.07, 0.01, far));
            return mix(behind, fire, std::exp(-std::pow(far / (0.05 + flames), 2.2)));
        }
        const double body = std::hypot(dx, dy * 1.5) - 0.017;
        const double wing =
            std::max(std::abs(dx) - 0.055, std::abs(dy + std::abs(dx) * 0.28) - 0.0035);
        const double pod = std::hypot(std::abs(dx) - 0.055, dy + 0.015) - 0.0085;
        const double shape = std::min({body, wing, pod});
        const Colour hull = mix({34, 24, 46}, {150, 92, 100}, step(0.01, -0.02, dy + dx));
        const Colour colour = mix(behind, hull, step(pixel / 2, -pixel / 2, shape));
        return mix(colour, {255, 60, 60}, std::exp(-std::hypot(dx, dy - 0.003) * 160));
    }

    static double noise(double place, int row)
    {
        const int cell = int(std::floor(place));
        return random_at(cell, row)
            + (random_at(cell + 1, row) - random_at(cell, row)) * step(0, 1, place - cell);
    }

    static constexpr int ridges_ = 6;

    double heading_;
    bool is_shot_down_;
};

// Blends a picture with premultiplied alpha over an opaque one, like the game.
inline Picture lay_over(const Picture& top, Picture bottom)
{
    for (size_t i = 0; i < bottom.rgba.size(); i += 4) {
        const int seen_through = 255 - top.rgba[i + 3];
        for (size_t channel = i; channel < i + 3; ++channel)
            bottom.rgba[channel] =
                uint8_t(top.rgba[channel] + (bottom.rgba[channel] * seen_through + 127) / 255);
    }
    return bottom;
}

}  // namespace example
