#include "codec/natural/Lookup.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "codec/LoadPixel.h"
#include "codec/natural/ReachableMap.h"
#include "platform/base/ProcessorVersions.h"

namespace zeb::natural {

namespace {

constexpr std::int32_t redStride = nodeIndex(1, 0, 0);
constexpr std::int32_t greenStride = nodeIndex(0, 1, 0);
constexpr std::int32_t blueStride = nodeIndex(0, 0, 1);
constexpr std::uint32_t oppositeCorner = nodeIndex(1, 1, 1);

/// The arrays of `Lookup::Tetrahedra`, which do not overlap.
struct Rows {
    std::uint32_t* __restrict first;
    std::uint32_t* __restrict steps;
    std::uint32_t* __restrict firstWeights;
    std::uint32_t* __restrict lastWeights;
};

/// Returns the position on an axis in 1/4096 of a cell: 32 cells for 0 ... 255.
ZEB_ALWAYS_INLINE std::int32_t position(std::uint32_t channel, std::int32_t amount) {
    const std::int32_t value =
        std::min(std::max(static_cast<std::int32_t>(channel * 256) + amount, 0), 65280);
    return 2 * value + (value >> 7);
}

/// Returns the fraction of the position above the axis' stride, so that the order of fractions brings the
/// strides along.
ZEB_ALWAYS_INLINE std::int32_t fractionWithStride(std::int32_t position, std::int32_t stride) {
    return (position & 4095) << 11 | stride;
}

ZEB_ALWAYS_INLINE void findTetrahedra(const std::uint8_t* rgba, const std::int32_t* amounts,
                                      std::size_t width, Rows rows) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = loadPixel(rgba + 4 * x);
        const std::int32_t red = position(pixel & 0xFF, amounts[x]);
        const std::int32_t green = position(pixel >> 8 & 0xFF, amounts[x]);
        const std::int32_t blue = position(pixel >> 16 & 0xFF, amounts[x]);
        rows.first[x] = static_cast<std::uint32_t>((red >> 12) * redStride + (green >> 12) * greenStride +
                                                   (blue >> 12) * blueStride);
        const std::int32_t r = fractionWithStride(red, redStride);
        const std::int32_t g = fractionWithStride(green, greenStride);
        const std::int32_t b = fractionWithStride(blue, blueStride);
        const std::int32_t high = std::max(r, g);
        const std::int32_t low = std::min(r, g);
        const std::int32_t most = std::max(high, b);
        const std::int32_t middle = std::max(low, std::min(high, b));
        const std::int32_t least = std::min(low, b);
        const std::int32_t second = most & 2047;
        const std::int32_t third = second + (middle & 2047);
        rows.steps[x] = static_cast<std::uint32_t>(second | third << 16);
        rows.firstWeights[x] =
            static_cast<std::uint32_t>((4096 - (most >> 11)) | ((most >> 11) - (middle >> 11)) << 16);
        rows.lastWeights[x] =
            static_cast<std::uint32_t>(((middle >> 11) - (least >> 11)) | (least >> 11) << 16);
    }
}

ZEB_FOR_AVX2 void findTetrahedraAVX2(const std::uint8_t* rgba, const std::int32_t* amounts, std::size_t width,
                                     Rows rows) {
    findTetrahedra(rgba, amounts, width, rows);
}

/// Interpolates with lanes of 32 bits in words of 64: a threshold times the sum of the weights is at most 2
/// to the power of 26.
void interpolate(const std::uint64_t* nodes, const Rows& rows, std::size_t width, std::uint64_t* thresholds) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint64_t* corner = nodes + rows.first[x];
        std::uint64_t outer = 0;   // first and third threshold
        std::uint64_t middle = 0;  // second threshold
        const auto add = [&](std::uint64_t node, std::uint32_t weight) {
            outer += (node & 0x0000FFFF0000FFFF) * weight;
            middle += (node >> 16 & 0xFFFF) * weight;
        };
        add(corner[0], rows.firstWeights[x] & 0xFFFF);
        add(corner[rows.steps[x] & 0xFFFF], rows.firstWeights[x] >> 16);
        add(corner[rows.steps[x] >> 16], rows.lastWeights[x] & 0xFFFF);
        add(corner[oppositeCorner], rows.lastWeights[x] >> 16);
        thresholds[x] = (outer >> 12 & 0x0000FFFF0000FFFF) | middle >> 12 << 16;
    }
}

}  // namespace

void Lookup::lookUp(std::span<const std::uint8_t> rgba, std::span<const std::int32_t> amounts,
                    std::span<std::uint64_t> thresholds) {
    const std::size_t width = thresholds.size();
    assert(rgba.size() == width * 4 && amounts.size() == width);
    for (std::vector<std::uint32_t>* row :
         {&m_tetrahedra.first, &m_tetrahedra.steps, &m_tetrahedra.firstWeights, &m_tetrahedra.lastWeights})
        row->resize(width);
    const Rows rows = {m_tetrahedra.first.data(), m_tetrahedra.steps.data(), m_tetrahedra.firstWeights.data(),
                       m_tetrahedra.lastWeights.data()};
    if (processorHasAVX2()) {
        findTetrahedraAVX2(rgba.data(), amounts.data(), width, rows);
    } else {
        findTetrahedra(rgba.data(), amounts.data(), width, rows);
    }
    interpolate(m_nodes.data(), rows, width, thresholds.data());
}

}  // namespace zeb::natural
