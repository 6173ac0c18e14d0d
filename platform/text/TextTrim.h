#pragma once

#include <string_view>

namespace zeb {

/// `text` (UTF-8) without the white space and line breaks (the Unicode property White_Space) at its ends.
std::string_view trimmed(std::string_view text);

}  // namespace zeb
