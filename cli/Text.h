#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Formats values for the user and parses them.
namespace zeb::cli {

/// Returns `text` without effects on a terminal: control characters (C0, DEL, C1), bidirectional marks and
/// bytes that are not UTF-8 become visible escapes ("\x1b", "\u202e").
std::string printable(std::string_view text);

/// Returns the number of code points in UTF-8 text, used as its width on a terminal.
std::size_t characterCount(std::string_view text);

/// Returns the first `count` code points of UTF-8 text.
std::string_view leadingCharacters(std::string_view text, std::size_t count);

/// "1 frame", "2 frames".
std::string countText(std::int64_t count, const char* singular, const char* plural);

/// Returns `value` with `decimals` digits after the point.
std::string decimalText(double value, int decimals);

/// Splits a list of a row: "-o,--output" with "," or "32, 4" with ", ".
std::vector<std::string> splitList(std::string_view list, std::string_view separator);

}  // namespace zeb::cli
