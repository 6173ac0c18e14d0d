#include "conversion/forecast/MovieSize.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "format/Layout.h"
#include "format/ZEBHeader.h"

namespace zeb {

namespace {

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    return a > largest - b ? largest : a + b;
}

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
    return a != 0 && b > largest / a ? largest : a * b;
}

std::uint64_t unsignedOf(std::int64_t value) {
    assert(value >= 0);
    return static_cast<std::uint64_t>(value);
}

std::uint64_t headerBytes(const std::string& title, std::int64_t seconds) {
    const std::uint64_t titleBytes = encodeTitle(title).size();
    const std::uint64_t fixed =
        layout::headerBody + layout::titleLengthSize + titleBytes + titleBytes % 2 + layout::fixedFieldsSize;
    return sum(fixed, product(layout::wordSize, unsignedOf(seconds)));
}

}  // namespace

MovieSize::MovieSize(const ConversionPlan& plan, const std::string& title, int channels,
                     std::vector<std::uint64_t> recordBytes)
    : m_headerBytes(headerBytes(title, plan.seconds)),
      m_soundBytes(product(layout::sampleRate, unsignedOf(channels))),
      m_fps(plan.fps),
      m_seconds(plan.seconds),
      m_totalFrames(plan.totalFrames),
      m_recordBytes(std::move(recordBytes)) {
    assert(!m_recordBytes.empty());
}

/// Returns the first frame of a part. For the index past the last part, returns the number of frames.
std::int64_t MovieSize::partStart(std::size_t part) const {
    const auto count = static_cast<std::int64_t>(m_recordBytes.size());
    const auto index = static_cast<std::int64_t>(part);
    return m_totalFrames / count * index + m_totalFrames % count * index / count;
}

std::uint64_t MovieSize::startOfSecond(std::int64_t second) const {
    const std::uint64_t perSecond = 2 * layout::wordSize + m_soundBytes;
    std::uint64_t bytes = sum(m_headerBytes, product(perSecond, unsignedOf(second)));
    const std::int64_t frames = second * m_fps;
    for (std::size_t part = 0; part < m_recordBytes.size(); ++part) {
        const std::int64_t start = partStart(part);
        if (start >= frames) break;
        const std::int64_t end = std::min(partStart(part + 1), frames);
        bytes = sum(bytes, product(unsignedOf(end - start), sum(layout::wordSize, m_recordBytes[part])));
    }
    return bytes;
}

bool MovieSize::isHeaderRefused() const {
    return unsignedOf(m_totalFrames) > layout::maxWord ||
           m_headerBytes - layout::headerBody > layout::maxWord;
}

std::optional<std::int64_t> MovieSize::firstRefusedSecond() const {
    if (isHeaderRefused()) return 0;
    // Block starts increase, so a binary search finds the first one that is too far.
    std::int64_t refused = m_seconds;
    for (std::int64_t low = 0; low < refused;) {
        const std::int64_t middle = low + (refused - low) / 2;
        if (startOfSecond(middle) > layout::maxWord) {
            refused = middle;
        } else {
            low = middle + 1;
        }
    }
    // Every earlier block starts below 4 GiB. Only the last one can be longer than 4 GiB itself.
    if (refused > 0 && startOfSecond(refused) - startOfSecond(refused - 1) > layout::maxWord) --refused;
    return refused < m_seconds ? std::optional(refused) : std::nullopt;
}

}  // namespace zeb
