#pragma once

#include <cstdint>
#include <span>

#include "platform/settings/PropertyValue.h"

namespace zeb::propertyList {

/// Reads a property list in the text form that preceded XML:
///
///     { name = "QL \"Demo\""; size = (640, 480); bytes = <0fbd77 1c>; /* comment */ }  // comment
///
/// Texts are in double or single quotes, or bare if they hold only letters, digits and $ _ . : / -. In
/// quotes, \a \b \f \n \r \t \v are control characters, \U with up to four hexadecimal digits is a UTF-16
/// unit, a backslash with up to three octal digits is a character of the NeXTSTEP set, and a backslash before
/// any other character is that character. A comma or semicolon may follow the last element. `key;` is short
/// for `key = key;`. All values other than bytes, arrays and dictionaries are texts.
///
/// The bytes are UTF-8, UTF-16 with a byte order mark, or else of the NeXTSTEP set. Throws
/// `PropertyListError`.
PropertyValue parseOld(std::span<const std::uint8_t> bytes);

}  // namespace zeb::propertyList
