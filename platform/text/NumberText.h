#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

/// Text for an unknown value.
inline constexpr const char* unknownText = "—";

/// Returns a time of at least 0 seconds in clock form: "0:05", "12:00", "2:00:59".
std::string clockText(std::int64_t seconds);

/// Returns a duration, rounded to whole seconds; 0 for NaN and negative numbers.
std::string durationText(double seconds);

/// Returns a duration for a window; `unknownText` for NaN, negative numbers and numbers of at least 2^63.
std::string formatDuration(double seconds);

/// Returns a position in a movie, rounded down to whole seconds; "0:00" for NaN, negative numbers and numbers
/// of at least 2^63.
std::string formatTime(double seconds);

/// Returns a size with a decimal unit in English: "999 bytes", "1.0 kB", "12.3 MB", "4.3 GB".
std::string byteText(std::uint64_t bytes);

/// Returns a size in the user's language, at least in kilobytes: "1.2 kB", "3.4 MB", "4.3 GB".
std::string byteCountText(std::uint64_t bytes);

/// Returns bytes as megabytes (10^6) in the user's language: "3.4 MB".
std::string megabytesText(std::uint64_t bytes);

/// Parses all of `text` as a decimal integer. Returns nothing if it is invalid or out of bounds.
std::optional<int> wholeNumber(std::string_view text, int lowest, int highest);

/// Parses all of `text` as a decimal number with a point ("1.5"). Returns nothing if it is invalid or out of
/// bounds.
std::optional<double> decimalNumber(std::string_view text, double lowest, double highest);

}  // namespace zeb
