#pragma once

#include <cstdint>
#include <string>

#include "platform/base/LocalizableError.h"

namespace zeb {

/// A movie with whole seconds behind damaged ones, which are not cut off.
class MovieDamageError : public LocalizableError {
public:
    MovieDamageError(std::int64_t second, std::uint64_t offset, std::int64_t secondsBehind)
        : LocalizableError(
              "second " + std::to_string(second) + " (at byte " + std::to_string(offset) +
                  ") is damaged; whole seconds behind it: " + std::to_string(secondsBehind),
              {"error_damaged_second_format", {second, static_cast<std::int64_t>(offset), secondsBehind}}),
          m_second(second),
          m_offset(offset),
          m_secondsBehind(secondsBehind) {}

    /// Number of the first damaged second, from 0.
    std::int64_t second() const noexcept { return m_second; }
    /// Bytes from the start of the file to its block.
    std::uint64_t offset() const noexcept { return m_offset; }
    /// Whole seconds behind it.
    std::int64_t secondsBehind() const noexcept { return m_secondsBehind; }

private:
    std::int64_t m_second;
    std::uint64_t m_offset;
    std::int64_t m_secondsBehind;
};

}  // namespace zeb
