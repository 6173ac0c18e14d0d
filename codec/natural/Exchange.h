#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zeb::natural {

/// Lets neighbours exchange their colours where that makes the blurred error smaller: a direct binary search
/// by swaps (Analoui and Allebach 1992), one pass. The number of pixels of each colour stays. Keeps working
/// buffers; one per thread.
class Exchange {
public:
    /// Improves `indices`, width x height. `thresholds` (packed like the nodes of `NaturalTable`) states the
    /// mix that each pixel stands for.
    void improve(std::span<const std::uint64_t> thresholds, int width, int height,
                 std::span<std::uint8_t> indices);

private:
    std::vector<std::int32_t> m_across;  ///< the last rows of the error, blurred along rows
    std::vector<std::int32_t> m_errors;  ///< one row of the error with a border
    std::vector<std::int32_t> m_field;   ///< the blurred error with a border
};

}  // namespace zeb::natural
