#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// How the program writes values for people, and reads them.
namespace zeb::cli {

/// `text` such that a terminal shows it and does nothing else: control characters (C0, DEL, C1), marks that
/// turn the writing direction and bytes that are not UTF-8 become visible escapes ("\x1b", "\u202e").
std::string printable(std::string_view text);

/// The number of code points in UTF-8 text, taken as its width on a terminal.
std::size_t characterCount(std::string_view text);

/// The first `count` code points of UTF-8 text.
std::string_view leadingCharacters(std::string_view text, std::size_t count);

/// "1 frame", "2 frames".
std::string countText(std::int64_t count, const char* singular, const char* plural);

/// `value` with `decimals` digits after the point.
std::string decimalText(double value, int decimals);

/// The whole number that all of `text` spells in decimal, if it lies within the bounds.
std::optional<int> wholeNumber(std::string_view text, int lowest, int highest);

}  // namespace zeb::cli
