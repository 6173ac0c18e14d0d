#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// What stands in for anything that is no character: U+FFFD.
inline constexpr char32_t replacementCharacter = 0xFFFD;

/// The characters of a UTF-8 text (Unicode 15, section 3.9). Each ill-formed sequence, as far as it could
/// still have become a character, gives one U+FFFD.
std::u32string decodeUTF8(std::string_view text);

/// Appends one character; what is no character (a surrogate, beyond U+10FFFF) as U+FFFD.
void appendUTF8(std::string& text, char32_t character);

/// `text` with U+FFFD for what is not UTF-8.
std::string repairedUTF8(std::string text);

}  // namespace zeb
