#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb::natural {

/// The mask has 64 x 64 points and repeats in both directions.
inline constexpr std::size_t maskSide = 64;

/// The ranks 0 ... 4095 of its points, row by row: a blue-noise pattern for each number of points.
extern const std::array<std::uint16_t, maskSide * maskSide> maskRanks;

/// Chooses a colour for each pixel of row `y`: the number of its thresholds (packed like the nodes of
/// `NaturalTable`) that the mask reaches.
void chooseColours(std::span<const std::uint64_t> thresholds, std::size_t y, std::span<std::uint8_t> indices);

}  // namespace zeb::natural
