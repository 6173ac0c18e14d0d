#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "format/BigEndian.h"

namespace zeb {

/// Reads bytes and big-endian integers one after the other. A read that would pass the end returns nothing
/// and leaves the position.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::size_t position() const noexcept { return m_position; }
    std::size_t remaining() const noexcept { return m_bytes.size() - m_position; }

    std::optional<std::span<const std::uint8_t>> take(std::size_t count) {
        if (count > remaining()) return std::nullopt;
        const auto taken = m_bytes.subspan(m_position, count);
        m_position += count;
        return taken;
    }

    std::optional<std::uint16_t> read16() {
        const auto bytes = take(2);
        if (!bytes) return std::nullopt;
        return bigEndian::load16(bytes->first<2>());
    }

    std::optional<std::uint32_t> read32() {
        const auto bytes = take(4);
        if (!bytes) return std::nullopt;
        return bigEndian::load32(bytes->first<4>());
    }

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

}  // namespace zeb
