#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "conversion/plan/ConversionPlan.h"

namespace zeb {

/// The size of the file that a run writes, from the sizes of its records. Sums that 64 bits cannot hold are
/// the largest number.
class MovieSize {
public:
    /// `recordBytes`, at least one: sizes of records that stand for equal parts of the movie, in its order.
    MovieSize(const ConversionPlan& plan, const std::string& title, int channels,
              std::vector<std::uint64_t> recordBytes);

    std::uint64_t fileBytes() const { return startOfSecond(m_seconds); }

    /// Where the block of a second (from 0) begins in the file; for their number, where the file ends.
    std::uint64_t startOfSecond(std::int64_t second) const;

    /// The first second that the writer refuses, for a block that begins beyond its 32 bits or is too long
    /// itself; 0 also when it refuses the header. Nothing when all fit.
    std::optional<std::int64_t> firstRefusedSecond() const;

private:
    std::int64_t partStart(std::size_t part) const;
    bool isHeaderRefused() const;

    std::uint64_t m_headerBytes;
    std::uint64_t m_soundBytes;  ///< of a second
    std::int64_t m_fps;
    std::int64_t m_seconds;
    std::int64_t m_totalFrames;
    std::vector<std::uint64_t> m_recordBytes;
};

}  // namespace zeb
