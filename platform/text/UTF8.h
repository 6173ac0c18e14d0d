#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Replacement for ill-formed sequences: U+FFFD.
inline constexpr char32_t replacementCharacter = 0xFFFD;

/// Decodes a UTF-8 text. Each maximal subpart of an ill-formed sequence gives one U+FFFD (Unicode 15, section
/// 3.9).
std::u32string decodeUTF8(std::string_view text);

/// Appends one character; replaces a surrogate or a value above U+10FFFF by U+FFFD.
void appendUTF8(std::string& text, char32_t character);

/// Returns `text` with ill-formed sequences replaced by U+FFFD.
std::string repairedUTF8(std::string text);

/// Returns `text` (UTF-8) without the white space and line breaks (Unicode property White_Space) at its ends.
std::string_view trimmed(std::string_view text);

}  // namespace zeb
