#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// The bytes that a file stores for a title given as UTF-8: ISO Latin-1 where every character has one, else
/// the UTF-8 itself; none when `title` is not valid UTF-8. Cut after 65535 bytes.
std::vector<std::uint8_t> encodeTitle(std::string_view title);

/// The title, as UTF-8, that a file's bytes stand for: ASCII or else UTF-8; "ZEB" when they are neither.
/// Latin-1 characters above 127 therefore do not come back.
std::string decodeTitle(std::span<const std::uint8_t> bytes);

}  // namespace zeb
