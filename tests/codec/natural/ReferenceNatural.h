#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "codec/natural/Mask.h"
#include "codec/natural/NaturalTable.h"

/// The natural colours as literal loops over whole planes, and the table's formulas with the functions of the
/// standard library.
namespace zeb::reference {

using Triple = std::array<double, 3>;

/// The tone curve and the thresholds of a reachable colour in linear light.
inline std::array<double, 3> exactThresholds(Triple colour, double tone, double toe) {
    const auto luminance = [&] { return 0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2]; };
    const double y = luminance();
    const double e = std::cbrt(y);
    const double t = toe > 0 ? std::clamp((e - toe) / toe, 0.0, 1.0) : 1;
    const double gain = y > 0 ? std::pow(tone * e / (1 + (tone - 1) * e) * t * t * (3 - 2 * t), 3) / y : 0;
    if (y > 0) {
        const double top = 1 / (colour[0] + colour[1] - colour[2]);
        const double pale = std::clamp(2 * colour[2] / std::max(colour[0], colour[1]), 0.0, 1.0);
        for (double& channel : colour)
            channel *= std::min(gain, (1 - pale) * top + pale * gain);
    }
    if (const double over = colour[0] + colour[1] - colour[2]; over > 1) {
        const double grey = luminance();
        for (double& channel : colour)
            channel = grey + (channel - grey) * (1 - grey) / (over - grey);
    }
    const auto& [r, g, b] = colour;
    std::array<double, 4> shares = {1 - r - g + b, r - b, g - b, b};
    double sum = 0;
    for (double& share : shares)
        sum += share = std::clamp(share, 0.0, 1.0);
    return {16384 * shares[0] / sum, 16384 * (shares[0] + shares[1]) / sum,
            16384 * (shares[0] + shares[1] + shares[2]) / sum};
}

inline int nodeThreshold(std::uint64_t node, int i) {
    return static_cast<int>(node >> 16 * i & 0xFFFF);
}

/// A plane of a picture. Coordinates outside repeat the edge.
struct Plane {
    int width;
    int height;
    std::vector<int> values = std::vector<int>(static_cast<std::size_t>(width * height));

    int& at(int x, int y) {
        return values[static_cast<std::size_t>(std::clamp(y, 0, height - 1) * width +
                                               std::clamp(x, 0, width - 1))];
    }
    bool contains(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

/// The amounts that the sharpening adds, in 1/256 of a level.
inline Plane sharpening(std::span<const std::uint8_t> rgba, int width, int height, int strength) {
    constexpr std::array<int, 9> taps = {1, 8, 28, 56, 70, 56, 28, 8, 1};
    Plane luma{width, height}, across{width, height}, amounts{width, height};
    for (std::size_t i = 0; i < luma.values.size(); ++i)
        luma.values[i] = 77 * rgba[4 * i] + 150 * rgba[4 * i + 1] + 29 * rgba[4 * i + 2];
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int sum = 8;
            for (int i = -4; i <= 4; ++i)
                sum += taps[static_cast<std::size_t>(i + 4)] * luma.at(x + i, y);
            across.at(x, y) = sum >> 4;
        }
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int sum = 2048;
            for (int i = -4; i <= 4; ++i)
                sum += taps[static_cast<std::size_t>(i + 4)] * across.at(x, y + i);
            const int difference = luma.at(x, y) - (sum >> 12);
            const int amount = (std::max(std::abs(difference) - 512, 0) * strength + 128) >> 8;
            amounts.at(x, y) = difference < 0 ? -amount : amount;
        }
    }
    return amounts;
}

/// The thresholds of one pixel: walks from the cell's corner along the axis of the greatest fraction, then of
/// the next ones.
inline std::array<int, 3> interpolated(std::span<const std::uint64_t> nodes, const std::uint8_t* rgba,
                                       int amount) {
    std::array<std::pair<int, int>, 3> steps;  // fraction and stride of each axis
    int node = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const int p = std::clamp(256 * rgba[axis] + amount, 0, 65280);
        const int q = 2 * p + (p >> 7);
        const int stride = std::array{33 * 33, 33, 1}[static_cast<std::size_t>(axis)];
        node += (q >> 12) * stride;
        steps[static_cast<std::size_t>(axis)] = {q & 4095, stride};
    }
    std::sort(steps.rbegin(), steps.rend());
    std::array<int, 3> sums{};
    int last = 4096;
    for (std::size_t corner = 0; corner < 4; ++corner) {
        const int next = corner < 3 ? steps[corner].first : 0;
        for (int i = 0; i < 3; ++i)
            sums[static_cast<std::size_t>(i)] +=
                nodeThreshold(nodes[static_cast<std::size_t>(node)], i) * (last - next);
        if (corner < 3) node += steps[corner].second;
        last = next;
    }
    return {sums[0] >> 12, sums[1] >> 12, sums[2] >> 12};
}

constexpr std::array<std::array<std::int64_t, 3>, 4> colourPlanes = {
    {{0, 0, 0}, {218, 256, -128}, {732, -256, -128}, {1024, 0, 0}}};

inline void exchangeNeighbours(const std::vector<std::array<int, 3>>& thresholds, Plane& colours) {
    using Error = std::array<std::int64_t, 3>;
    constexpr std::array<int, 7> taps = {1, 5, 15, 22, 15, 5, 1};
    const auto kernel = [&](int x, int y) {
        return std::int64_t{taps[static_cast<std::size_t>(x + 3)]} * taps[static_cast<std::size_t>(y + 3)];
    };
    const int width = colours.width, height = colours.height;
    const auto index = [&](int x, int y) { return static_cast<std::size_t>(y * width + x); };
    const auto planes = [](int colour) { return colourPlanes[static_cast<std::size_t>(colour)]; };

    std::vector<Error> errors(thresholds.size()), field(thresholds.size());
    for (std::size_t i = 0; i < thresholds.size(); ++i) {
        const auto& [t1, t2, t3] = thresholds[i];
        for (std::size_t p = 0; p < 3; ++p)
            errors[i][p] = planes(colours.values[i])[p] -
                           (((t2 - t1) * colourPlanes[1][p] + (t3 - t2) * colourPlanes[2][p] +
                             (16384 - t3) * colourPlanes[3][p] + 8192) >>
                            14);
    }
    const auto spread = [&](int x, int y, const Error& amount) {
        for (int j = -3; j <= 3; ++j)
            for (int i = -3; i <= 3; ++i)
                if (colours.contains(x + i, y + j))
                    for (std::size_t p = 0; p < 3; ++p)
                        field[index(x + i, y + j)][p] += kernel(i, j) * amount[p];
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            spread(x, y, errors[index(x, y)]);

    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::int64_t least = -21474836;
            std::pair<int, int> best{0, 0};
            for (const auto& [i, j] : {std::pair{1, 0}, {0, 1}, {1, 1}, {-1, 1}}) {
                if (!colours.contains(x + i, y + j)) continue;
                std::int64_t cost = 0;
                for (std::size_t p = 0; p < 3; ++p) {
                    const std::int64_t v = planes(colours.at(x + i, y + j))[p] - planes(colours.at(x, y))[p];
                    cost += v * (2 * (field[index(x, y)][p] - field[index(x + i, y + j)][p]) +
                                 2 * (kernel(0, 0) - kernel(i, j)) * v);
                }
                if (cost < least) {
                    least = cost;
                    best = {i, j};
                }
            }
            if (best == std::pair{0, 0}) continue;
            int& here = colours.at(x, y);
            int& there = colours.at(x + best.first, y + best.second);
            Error change, opposite;
            for (std::size_t p = 0; p < 3; ++p) {
                change[p] = planes(there)[p] - planes(here)[p];
                opposite[p] = -change[p];
            }
            spread(x, y, change);
            spread(x + best.first, y + best.second, opposite);
            std::swap(here, there);
        }
    }
}

inline std::vector<std::uint8_t> reduceNaturally(const NaturalTable& table, bool isFine, int strength,
                                                 std::span<const std::uint8_t> rgba, int width, int height) {
    Plane amounts = sharpening(rgba, width, height, strength);
    Plane colours{width, height};
    std::vector<std::array<int, 3>> thresholds;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            thresholds.push_back(interpolated(table.nodes(), &rgba[thresholds.size() * 4], amounts.at(x, y)));
            const int level = 4 * natural::maskRanks[static_cast<std::size_t>(y % 64 * 64 + x % 64)] + 2;
            for (const int threshold : thresholds.back())
                colours.at(x, y) += level >= threshold;
        }
    }
    if (isFine) exchangeNeighbours(thresholds, colours);
    return {colours.values.begin(), colours.values.end()};
}

}  // namespace zeb::reference
