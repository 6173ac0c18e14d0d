#pragma once

#include <cstdint>
#include <vector>

#include "conversion/sound/SoundBytes.h"

namespace zeb {

/// The sound of second `second` (from 0): exactly `bytesPerSecond` bytes, filled up with silence (0x80) where
/// the sound has run out. Nothing when `channels` is below 1.
std::vector<std::uint8_t> audioSlice(std::int64_t second, int channels, std::int64_t bytesPerSecond,
                                     const SoundBytes& audio);

}  // namespace zeb
