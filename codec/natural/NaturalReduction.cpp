#include "codec/natural/NaturalReduction.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>
#include <vector>

#include "codec/natural/Exchange.h"
#include "codec/natural/Lookup.h"
#include "codec/natural/Mask.h"
#include "codec/natural/Sharpening.h"

namespace zeb {

namespace {

/// Returns the strength of the sharpening in 1/256. The exchange carries more detail than the mask.
int strengthOf(NaturalDithering dithering, int sharpness) {
    const int full = dithering == NaturalDithering::ordered ? 256 : 512;
    return (std::clamp(sharpness, 0, 200) * full + 50) / 100;
}

}  // namespace

struct NaturalReduction::Steps {
    NaturalDithering dithering;
    natural::Sharpening sharpening;
    natural::Lookup lookup;                     ///< in the nodes of `table`
    std::shared_ptr<const NaturalTable> table;  ///< moved here after `lookup` has read it
    natural::Exchange exchange;
    std::vector<std::uint64_t> thresholds;
};

NaturalReduction::NaturalReduction(std::shared_ptr<const NaturalTable> table, NaturalDithering dithering,
                                   int sharpness)
    : m_steps(new Steps{.dithering = dithering,
                        .sharpening = natural::Sharpening(strengthOf(dithering, sharpness)),
                        .lookup = natural::Lookup(table->nodes()),
                        .table = std::move(table),
                        .exchange = {},
                        .thresholds = {}}) {}

NaturalReduction::~NaturalReduction() = default;
NaturalReduction::NaturalReduction(NaturalReduction&&) noexcept = default;
NaturalReduction& NaturalReduction::operator=(NaturalReduction&&) noexcept = default;

void NaturalReduction::reduce(std::span<const std::uint8_t> rgba, int width, int height,
                              std::span<std::uint8_t> indices) {
    assert(width > 0 && height > 0);
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    assert(indices.size() == columns * rows && rgba.size() == indices.size() * 4);
    auto& [dithering, sharpening, lookup, table, exchange, thresholds] = *m_steps;

    const bool isFine = dithering == NaturalDithering::fine;
    thresholds.resize(columns * (isFine ? rows : 1));
    sharpening.setPicture(rgba, width, height);
    for (std::size_t y = 0; y < rows; ++y) {
        const std::span<std::uint64_t> row = std::span(thresholds).subspan(isFine ? y * columns : 0, columns);
        lookup.lookUp(rgba.subspan(y * columns * 4, columns * 4), sharpening.row(static_cast<int>(y)), row);
        natural::chooseColours(row, y, indices.subspan(y * columns, columns));
    }
    if (isFine) exchange.improve(thresholds, width, height, indices);
}

}  // namespace zeb
