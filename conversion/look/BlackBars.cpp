#include "conversion/look/BlackBars.h"

#include <algorithm>
#include <cstddef>

namespace zeb {
namespace {

/// The largest value of a channel that counts as black. Decoded black bars are 0 with a little noise.
constexpr std::uint8_t largestBlack = 22;

/// Returns the index of the first used element.
int firstUsed(const std::vector<bool>& isUsed) {
    return static_cast<int>(std::ranges::find(isUsed, true) - isUsed.begin());
}

int endOfUsed(const std::vector<bool>& isUsed) {
    return static_cast<int>(isUsed.rend() - std::find(isUsed.rbegin(), isUsed.rend(), true));
}

}  // namespace

BlackBars::BlackBars(int width, int height)
    : m_width(width),
      m_height(height),
      m_rowIsUsed(static_cast<std::size_t>(height)),
      m_columnIsUsed(static_cast<std::size_t>(width)) {}

void BlackBars::add(std::span<const std::uint8_t> rgba) {
    const auto width = static_cast<std::size_t>(m_width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(m_height); ++y) {
        const std::uint8_t* pixel = rgba.data() + 4 * y * width;
        for (std::size_t x = 0; x < width; ++x, pixel += 4) {
            if (std::max({pixel[0], pixel[1], pixel[2]}) <= largestBlack) continue;
            m_rowIsUsed[y] = true;
            m_columnIsUsed[x] = true;
        }
    }
}

std::optional<PixelRectangle> BlackBars::picture() const {
    if (std::ranges::find(m_rowIsUsed, true) == m_rowIsUsed.end()) return std::nullopt;
    PixelRectangle part;
    // Rounded outwards, so that no picture is lost and subsampled chroma stays in place.
    const auto evenBelow = [](int value) { return value - value % 2; };
    const auto evenAbove = [](int value, int most) { return std::min(value + value % 2, most); };
    part.x = evenBelow(firstUsed(m_columnIsUsed));
    part.y = evenBelow(firstUsed(m_rowIsUsed));
    part.width = evenAbove(endOfUsed(m_columnIsUsed), m_width) - part.x;
    part.height = evenAbove(endOfUsed(m_rowIsUsed), m_height) - part.y;
    const double area = static_cast<double>(part.width) * part.height;
    if (area < 0.25 * m_width * m_height) return std::nullopt;

    // Narrower bars are shadows at the edges of a camera's picture rather than bars.
    const auto barOrNone = [](int& start, int& length, int whole) {
        const int smallest = std::max(2, (whole + 99) / 100);
        const int end = start + length;
        const int newStart = start < smallest ? 0 : start;
        const int newEnd = whole - end < smallest ? whole : end;
        start = newStart;
        length = newEnd - newStart;
    };
    barOrNone(part.x, part.width, m_width);
    barOrNone(part.y, part.height, m_height);
    if (part == PixelRectangle{0, 0, m_width, m_height}) return std::nullopt;
    return part;
}

}  // namespace zeb
