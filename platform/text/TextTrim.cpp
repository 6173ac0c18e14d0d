#include "platform/text/TextTrim.h"

#include <algorithm>
#include <array>

namespace zeb {
namespace {

// The characters with the property White_Space, in UTF-8 (Unicode 15, PropList.txt), and the zero width
// space, which text frameworks count among them.
constexpr std::array<std::string_view, 26> whiteSpace = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00a0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200a", "\u200b", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};

template <typename HasAtEnd>
std::size_t lengthAtEnd(HasAtEnd hasAtEnd) {
    const auto* found = std::find_if(whiteSpace.begin(), whiteSpace.end(), hasAtEnd);
    return found == whiteSpace.end() ? 0 : found->size();
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    while (const auto length =
               lengthAtEnd([text](std::string_view blank) { return text.starts_with(blank); }))
        text.remove_prefix(length);
    while (const auto length = lengthAtEnd([text](std::string_view blank) { return text.ends_with(blank); }))
        text.remove_suffix(length);
    return text;
}

}  // namespace zeb
