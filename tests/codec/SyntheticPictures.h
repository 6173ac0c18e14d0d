#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// Deterministic pictures as RGBA bytes.
namespace zeb::synthetic {

inline std::vector<std::uint8_t> flat(int width, int height, std::uint8_t red, std::uint8_t green,
                                      std::uint8_t blue) {
    std::vector<std::uint8_t> rgba;
    for (int i = 0; i < width * height; ++i)
        rgba.insert(rgba.end(), {red, green, blue, 255});
    return rgba;
}

/// Random bytes, including alpha.
inline std::vector<std::uint8_t> noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> rgba(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (std::uint8_t& byte : rgba)
        byte = static_cast<std::uint8_t>(random());
    return rgba;
}

/// Imitates a camera picture: soft shading, objects with edges and a fine texture, even areas, and a little
/// noise in the bright parts only, as after video compression.
inline std::vector<std::uint8_t> natural(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> grain(0, 1.5);
    std::vector<std::uint8_t> rgba;
    const double phase = seed * 0.37;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = x / 512.0;
            const double v = y / 288.0;
            double light =
                110 + 70 * std::sin(3.1 * u + phase) * std::cos(2.3 * v) + 25 * std::sin(9 * u * v);
            const double distance = std::hypot(u - 0.45 - 0.1 * std::sin(phase), v - 0.55);
            if (distance < 0.22) light = 60 + 500 * distance + 14 * std::sin(x * 0.9) * std::sin(y * 0.7);
            if (v < 0.12) light = 16;  // a black bar
            if (light > 70) light += grain(random);
            const auto channel = [&](double scale, double offset) {
                return static_cast<std::uint8_t>(std::clamp(light * scale + offset, 0.0, 255.0));
            };
            rgba.insert(rgba.end(), {channel(1.1, 5), channel(1.0, 0), channel(0.8, 12), 255});
        }
    }
    return rgba;
}

}  // namespace zeb::synthetic
