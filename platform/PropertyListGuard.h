#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb::propertyList {

/// Looks over a list before the library, which trusts it more than it should, gets to see it: it builds every
/// promised value at once and walks nested ones by calling itself. Both throw `PropertyListError` unless the
/// list keeps to the bounds of `PropertyList.h`. What they let pass may still be no property list.

/// XML as property lists use it: their own elements, no attributes but those of <plist>, no declarations.
void checkXML(std::string_view text);

/// The binary form: every offset, count and reference that is reached from the top, each value as often as it
/// would be built.
void checkBinary(std::span<const std::uint8_t> bytes);

}  // namespace zeb::propertyList
