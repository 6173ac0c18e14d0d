#include "conversion/sound/AudioSlice.h"

#include <cassert>

namespace zeb {

std::vector<std::uint8_t> audioSlice(std::int64_t second, int channels, std::int64_t bytesPerSecond,
                                     const SoundBytes& audio) {
    constexpr std::uint8_t silence = 0x80;
    assert(second >= 0);
    if (channels < 1 || bytesPerSecond < 1) return {};
    std::vector<std::uint8_t> slice(static_cast<std::size_t>(bytesPerSecond), silence);
    // Compared as a quotient: the product may not fit for seconds far behind the sound's end.
    const auto length = static_cast<std::uint64_t>(bytesPerSecond);
    const auto index = static_cast<std::uint64_t>(second);
    if (index <= audio.size() / length) audio.copy(index * length, slice);
    return slice;
}

}  // namespace zeb
