#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

/// A time in a film.
struct TimePoint {
    enum class Unit { microseconds, percent };
    Unit unit = Unit::microseconds;
    std::int64_t value = 0;  ///< microseconds, or millionths of a percent of the film's length

    /// Returns the time in seconds from the start of a film of `duration` seconds.
    double seconds(double duration) const;

    bool operator==(const TimePoint&) const = default;
};

/// The part of a film that becomes the movie. An empty end is that of the film.
struct TimeRange {
    std::optional<TimePoint> from;
    std::optional<TimePoint> to;

    bool operator==(const TimeRange&) const = default;
};

/// Parses a time to microseconds: seconds ("90", "2.5"), "M:SS" or "H:MM:SS", with up to six decimals of a
/// second. Returns nothing for other text.
std::optional<std::int64_t> parseTime(std::string_view text);

/// Parses a time like `parseTime`, or a percentage from 0 to 100 ("25%", "12.5%").
std::optional<TimePoint> parseTimePoint(std::string_view text);

/// Returns the text of a time, which `parseTimePoint` reads back: "1:02:03.5", "12.5%".
std::string timePointText(const TimePoint& time);

}  // namespace zeb
