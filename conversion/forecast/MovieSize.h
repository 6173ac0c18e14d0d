#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "conversion/plan/ConversionPlan.h"

namespace zeb {

/// The size of the file that a conversion writes, computed from the sizes of its records. Sums saturate at 64
/// bits.
class MovieSize {
public:
    /// `recordBytes`, at least one: sizes of records that represent equal parts of the movie, in order.
    MovieSize(const ConversionPlan& plan, const std::string& title, int channels,
              std::vector<std::uint64_t> recordBytes);

    std::uint64_t fileBytes() const { return startOfSecond(m_seconds); }

    /// Returns the file offset of the block of `second` (from 0). For `second` = number of seconds: the file
    /// size.
    std::uint64_t startOfSecond(std::int64_t second) const;

    /// Returns the first second that the writer rejects because its block starts beyond 32 bits or is too
    /// long. Returns 0 also if the writer rejects the header. Empty if all seconds fit.
    std::optional<std::int64_t> firstRefusedSecond() const;

private:
    std::int64_t partStart(std::size_t part) const;
    bool isHeaderRefused() const;

    std::uint64_t m_headerBytes;
    std::uint64_t m_soundBytes;  ///< per second
    std::int64_t m_fps;
    std::int64_t m_seconds;
    std::int64_t m_totalFrames;
    std::vector<std::uint64_t> m_recordBytes;
};

}  // namespace zeb
