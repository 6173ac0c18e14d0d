#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb::natural {

/// Looks colours up in a table of 33 x 33 x 33 nodes (`NaturalTable`) by tetrahedral interpolation. Keeps
/// working buffers; one per thread.
class Lookup {
public:
    /// `nodes` must outlive the object.
    explicit Lookup(std::span<const std::uint64_t> nodes) : m_nodes(nodes) {}

    /// Writes the thresholds of each pixel of a row, packed like the nodes. `amounts` is added to R, G and B,
    /// in 1/256 of a level.
    void lookUp(std::span<const std::uint8_t> rgba, std::span<const std::int32_t> amounts,
                std::span<std::uint64_t> thresholds);

private:
    /// The tetrahedron of one pixel, for lanes of 32 bits.
    struct Tetrahedra {
        std::vector<std::uint32_t> first;         ///< node of the first corner
        std::vector<std::uint32_t> steps;         ///< from there to the second (low half) and third corner
        std::vector<std::uint32_t> firstWeights;  ///< of the first (low half) and second corner, of 4096
        std::vector<std::uint32_t> lastWeights;   ///< of the third (low half) and fourth corner
    };

    std::span<const std::uint64_t> m_nodes;
    Tetrahedra m_tetrahedra;
};

}  // namespace zeb::natural
