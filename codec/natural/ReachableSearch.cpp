#include "codec/natural/ReachableSearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace zeb::natural {

namespace {

constexpr int gridSteps = 24;
constexpr int rounds = 16;
constexpr double firstStep = 0.06;
constexpr double stepRatio = 0.65;
constexpr double hueWeight = 1.25;

enum : std::size_t { black, red, green, white };

}  // namespace

ReachableSearch::ReachableSearch() {
    for (const auto& [one, other] : {std::pair{red, green}, {red, white}, {green, white}}) {
        for (int i = 0; i <= gridSteps; ++i) {
            for (int j = 0; j <= gridSteps; ++j) {
                const double amount = static_cast<double>(i * i) / (gridSteps * gridSteps);
                const double share = static_cast<double>(j) / gridSteps;
                Mix mix{1 - amount};
                mix[one] = amount * (1 - share);
                mix[other] = amount * share;
                add(mix);
            }
        }
    }
    for (int i = 0; i <= gridSteps; ++i) {
        for (int j = 0; j <= gridSteps; ++j) {
            const double amount = static_cast<double>(i * i) / (gridSteps * gridSteps);
            const double share = static_cast<double>(j) / gridSteps;
            add({0, (1 - amount) * (1 - share), (1 - amount) * share, amount});
        }
    }
}

void ReachableSearch::add(const Mix& mix) {
    m_candidates.push_back({mix, appearanceOf(colourOf(mix))});
}

ReachableSearch::Appearance ReachableSearch::appearanceOf(const Colour& colour) {
    const auto& [r, g, b] = colour;
    const double l = cubeRoot(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
    const double m = cubeRoot(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
    const double s = cubeRoot(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
    Appearance result{.lightness = 0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
                      .a = 1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
                      .b = 0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s,
                      .chroma = 0};
    result.chroma = std::sqrt(result.a * result.a + result.b * result.b);
    return result;
}

double ReachableSearch::distance(const Appearance& left, const Appearance& right) {
    const auto square = [](double value) { return value * value; };
    const double chroma = square(left.chroma - right.chroma);
    const double hue = std::max(square(left.a - right.a) + square(left.b - right.b) - chroma, 0.0);
    return square(left.lightness - right.lightness) + chroma + hueWeight * hueWeight * hue;
}

Mix ReachableSearch::nearest(const Colour& colour) const {
    if (const Mix exact = mixOf(colour); isReachable(exact)) return exact;

    const Appearance goal = appearanceOf(colour);
    Mix best = m_candidates.front().mix;
    double least = distance(m_candidates.front().appearance, goal);
    for (const Candidate& candidate : m_candidates) {
        const double found = distance(candidate.appearance, goal);
        if (found < least) {
            least = found;
            best = candidate.mix;
        }
    }

    // Move shares between pairs of colours while that gets nearer, in ever smaller steps.
    double step = firstStep;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t from = black; from <= white; ++from) {
            for (std::size_t to = black; to <= white; ++to) {
                if (from == to) continue;
                Mix moved = best;
                const double amount = std::min(moved[from], step);
                moved[from] -= amount;
                moved[to] += amount;
                const double found = distance(appearanceOf(colourOf(moved)), goal);
                if (found < least) {
                    least = found;
                    best = moved;
                }
            }
        }
        step *= stepRatio;
    }
    return best;
}

}  // namespace zeb::natural
