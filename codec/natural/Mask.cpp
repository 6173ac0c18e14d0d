#include "codec/natural/Mask.h"

#include <algorithm>
#include <cassert>

#include "platform/base/ProcessorVersions.h"

namespace zeb::natural {

const std::array<std::uint16_t, maskSide* maskSide> maskRanks = {
#include "codec/natural/MaskRanks.inc"
};

namespace {

/// Compares three lanes of 16 bits at a time: the top bit of a lane stays 1 if the mask reaches the
/// threshold. Both are below 2^15.
ZEB_ALWAYS_INLINE void chooseUpToMaskSide(const std::uint64_t* thresholds, const std::uint16_t* ranks,
                                          std::size_t count, std::uint8_t* indices) {
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint64_t level = 4 * std::uint64_t{ranks[x]} + 2 + 0x8000;
        const std::uint64_t reached = (level | level << 16 | level << 32) - thresholds[x];
        indices[x] =
            static_cast<std::uint8_t>((reached >> 15 & 1) + (reached >> 31 & 1) + (reached >> 47 & 1));
    }
}

ZEB_FOR_AVX2 void chooseUpToMaskSideAVX2(const std::uint64_t* thresholds, const std::uint16_t* ranks,
                                         std::size_t count, std::uint8_t* indices) {
    chooseUpToMaskSide(thresholds, ranks, count, indices);
}

}  // namespace

void chooseColours(std::span<const std::uint64_t> thresholds, std::size_t y,
                   std::span<std::uint8_t> indices) {
    assert(thresholds.size() == indices.size());
    const std::uint16_t* ranks = maskRanks.data() + y % maskSide * maskSide;
    for (std::size_t x = 0; x < indices.size(); x += maskSide) {
        const std::size_t count = std::min(maskSide, indices.size() - x);
        if (processorHasAVX2()) {
            chooseUpToMaskSideAVX2(thresholds.data() + x, ranks, count, indices.data() + x);
        } else {
            chooseUpToMaskSide(thresholds.data() + x, ranks, count, indices.data() + x);
        }
    }
}

}  // namespace zeb::natural
