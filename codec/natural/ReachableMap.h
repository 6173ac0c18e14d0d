#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zeb::natural {

/// Nodes along each axis of a grid over the encoded colours: node i stands for the encoded value i / 32.
inline constexpr std::size_t gridNodes = 33;

constexpr std::size_t nodeIndex(std::size_t red, std::size_t green, std::size_t blue) {
    return (red * gridNodes + green) * gridNodes + blue;
}

/// Unit of the corrections in linear light.
inline constexpr double correctionUnit = 1.0 / (1 << 30);

/// For each node by `nodeIndex`: the nearest reachable colour minus the node's colour, both in linear light,
/// 0 for reachable colours. The program `make_reachable_map` computes it during the build.
extern const std::array<std::array<std::int32_t, 3>, gridNodes * gridNodes * gridNodes> reachableCorrections;

}  // namespace zeb::natural
