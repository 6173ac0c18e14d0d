#include "conversion/sound/SoundBytes.h"

#include <algorithm>
#include <cassert>

namespace zeb {

void SoundBytes::append(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto within = static_cast<std::size_t>(m_size % blockSize);
        if (within == 0) m_blocks.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(blockSize));
        const std::size_t count = std::min(bytes.size(), blockSize - within);
        std::copy_n(bytes.data(), count, m_blocks.back().get() + within);
        m_size += count;
        bytes = bytes.subspan(count);
    }
}

std::size_t SoundBytes::copy(std::uint64_t offset, std::span<std::uint8_t> target) const {
    if (offset >= m_size) return 0;
    target = target.first(static_cast<std::size_t>(std::min<std::uint64_t>(target.size(), m_size - offset)));
    const std::size_t total = target.size();
    while (!target.empty()) {
        const auto within = static_cast<std::size_t>(offset % blockSize);
        const std::size_t count = std::min(target.size(), blockSize - within);
        std::copy_n(m_blocks[static_cast<std::size_t>(offset / blockSize)].get() + within, count,
                    target.data());
        offset += count;
        target = target.subspan(count);
    }
    return total;
}

std::vector<std::uint8_t> audioSlice(std::int64_t second, int channels, std::int64_t bytesPerSecond,
                                     const SoundBytes& audio) {
    constexpr std::uint8_t silence = 0x80;
    assert(second >= 0);
    if (channels < 1 || bytesPerSecond < 1) return {};
    std::vector<std::uint8_t> slice(static_cast<std::size_t>(bytesPerSecond), silence);
    // Compare quotients: the product may overflow for seconds far past the end of the sound.
    const auto length = static_cast<std::uint64_t>(bytesPerSecond);
    const auto index = static_cast<std::uint64_t>(second);
    if (index <= audio.size() / length) audio.copy(index * length, slice);
    return slice;
}

}  // namespace zeb
