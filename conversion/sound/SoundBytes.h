#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zeb {

/// A sequence of sound bytes in blocks. Growing does not copy existing bytes, so a soundtrack of hours takes
/// its bytes plus at most one block.
class SoundBytes {
public:
    std::uint64_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }

    void append(std::span<const std::uint8_t> bytes);

    /// Copies the bytes from `offset` on into `target`. Returns the number of bytes copied, which is less
    /// than the size of `target` at the end.
    std::size_t copy(std::uint64_t offset, std::span<std::uint8_t> target) const;

private:
    /// Slightly less than 1 MiB: with the allocator's header it fills whole pages.
    static constexpr std::size_t blockSize = (std::size_t{1} << 20) - 64;

    std::vector<std::unique_ptr<std::uint8_t[]>> m_blocks;
    std::uint64_t m_size = 0;
};

/// Returns the sound of second `second` (from 0): exactly `bytesPerSecond` bytes, padded with silence (0x80)
/// past the end of the sound. Empty if `channels` is below 1.
std::vector<std::uint8_t> audioSlice(std::int64_t second, int channels, std::int64_t bytesPerSecond,
                                     const SoundBytes& audio);

}  // namespace zeb
