#include "codec/natural/NaturalTable.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <functional>
#include <utility>

#include "codec/natural/Mix.h"
#include "codec/natural/ReachableMap.h"

namespace zeb {

namespace natural {

namespace {

constexpr double tiny = 1e-9;

double luminance(const Colour& colour) {
    return 0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2];
}

/// Interpolates the corrections of the map at an encoded colour: within the tetrahedron of four nodes that
/// the order of the fractions selects.
Colour correctionAt(const Colour& encoded) {
    constexpr std::array<std::size_t, 3> strides = {nodeIndex(1, 0, 0), nodeIndex(0, 1, 0),
                                                    nodeIndex(0, 0, 1)};
    std::array<std::pair<double, std::size_t>, 3> fractions;  // with the stride of the axis
    std::size_t node = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double position = encoded[axis] * (gridNodes - 1);
        const double cell = std::min(std::floor(position), gridNodes - 2.0);
        node += static_cast<std::size_t>(cell) * strides[axis];
        fractions[axis] = {position - cell, strides[axis]};
    }
    std::sort(fractions.begin(), fractions.end(), std::greater<>());

    Colour sum{};
    double last = 1;
    for (std::size_t corner = 0; corner < 4; ++corner) {
        const double next = corner < 3 ? fractions[corner].first : 0;
        for (std::size_t i = 0; i < 3; ++i)
            sum[i] += (last - next) * correctionUnit * reachableCorrections[node][i];
        if (corner < 3) node += fractions[corner].second;
        last = next;
    }
    return sum;
}

/// Returns the reachable colour for an encoded colour: the same if it is reachable, else the nearest by the
/// map.
Colour reachable(const Colour& encoded) {
    Colour colour;
    std::transform(encoded.begin(), encoded.end(), colour.begin(), linearLight);
    if (isReachable(mixOf(colour))) return colour;
    const Colour correction = correctionAt(encoded);
    for (std::size_t i = 0; i < 3; ++i)
        colour[i] += correction[i];
    return colourOf(normalised(mixOf(colour)));
}

/// Returns the luminance after the tone curve: the lift of dark tones is rational in the cube root, below the
/// toe all is black, and up to twice the toe the curve rises smoothly.
double toned(double luminance, const NaturalParameters& parameters) {
    const double root = cubeRoot(luminance);
    const double lifted = parameters.tone * root / (1 + (parameters.tone - 1) * root);
    const double rise = parameters.toe > 0 ? std::clamp(root / parameters.toe - 1, 0.0, 1.0) : 1;
    const double result = lifted * rise * rise * (3 - 2 * rise);
    return result * result * result;
}

/// Applies the tone curve to a reachable colour and keeps it reachable: a pure colour stays as pure and gains
/// less, a pastel becomes paler.
Colour withTone(Colour colour, const NaturalParameters& parameters) {
    const double before = luminance(colour);
    const double gain = toned(before, parameters) / std::max(before, tiny);
    const auto& [red, green, blue] = colour;
    const double greatest = 1 / std::max(red + green - blue, tiny);
    const double pale = std::clamp(2 * blue / std::max({red, green, tiny}), 0.0, 1.0);
    const double allowed = std::min(gain, (1 - pale) * greatest + pale * gain);
    for (double& channel : colour)
        channel *= allowed;

    const double over = red + green - blue;
    if (over > 1) {
        const double grey = luminance(colour);
        const double share = (1 - grey) / std::max(over - grey, tiny);
        for (double& channel : colour)
            channel = grey + (channel - grey) * share;
    }
    return colour;
}

std::uint64_t packed(const Mix& mix) {
    double sum = 0;
    std::uint64_t node = 0;
    for (unsigned i = 0; i < 3; ++i) {
        sum += mix[i];
        node |= static_cast<std::uint64_t>(std::floor(sum * 16384 + 0.5)) << 16 * i;
    }
    return node;
}

}  // namespace

}  // namespace natural

NaturalTable::NaturalTable(const NaturalParameters& parameters) {
    using namespace natural;
    assert(parameters.tone >= 1 && parameters.toe >= 0);
    m_nodes.reserve(reachableCorrections.size());
    const auto encoded = [](std::size_t node) { return static_cast<double>(node) / (gridNodes - 1); };
    for (std::size_t red = 0; red < gridNodes; ++red) {
        for (std::size_t green = 0; green < gridNodes; ++green) {
            for (std::size_t blue = 0; blue < gridNodes; ++blue) {
                const Colour colour =
                    adjusted(parameters.controls, {encoded(red), encoded(green), encoded(blue)});
                m_nodes.push_back(packed(normalised(mixOf(withTone(reachable(colour), parameters)))));
            }
        }
    }
}

}  // namespace zeb
