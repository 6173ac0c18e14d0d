#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

/// Stands for an unknown value.
inline constexpr const char* unknownText = "—";

/// A time of at least 0 seconds as a clock shows it: "0:05", "12:00", "2:00:59".
std::string clockText(std::int64_t seconds);

/// A length of time, rounded to whole seconds. What is not a number or negative is 0.
std::string durationText(double seconds);

/// The same for a window, which shows `unknownText` for what is not a number, negative or at least 2^63.
std::string formatDuration(double seconds);

/// A position in a movie, rounded down to whole seconds; "0:00" for what is not a number, negative or at
/// least 2^63.
std::string formatTime(double seconds);

/// A size with a decimal unit: "999 bytes", "1.0 kB", "12.3 MB", "4.3 GB". Digits of English.
std::string byteText(std::uint64_t bytes);

/// The same in the user's language, never in bytes: "1.2 kB", "3.4 MB", "4.3 GB".
std::string byteCountText(std::uint64_t bytes);

/// Bytes in megabytes (10^6) in the user's language: "3.4 MB".
std::string megabytesText(std::uint64_t bytes);

}  // namespace zeb
