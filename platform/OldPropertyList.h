#pragma once

#include <cstdint>
#include <span>

#include "platform/PropertyValue.h"

namespace zeb::propertyList {

/// Reads a property list in the text form that was there before XML:
///
///     { name = "QL \"Demo\""; size = (640, 480); bytes = <0fbd77 1c>; /* comment */ }  // comment
///
/// Texts stand in double or single quotes, or bare when they hold only letters, digits and $ _ . : / -. In
/// quotes \a \b \f \n \r \t \v stand for control characters, \U and up to four hexadecimal digits for a
/// UTF-16 unit, a backslash and up to three octal digits for a character of the NeXTSTEP set, a backslash and
/// anything else for itself. A comma or semicolon may follow the last element; `key;` is short for
/// `key = key;`. All values that are neither bytes, arrays nor dictionaries are texts.
///
/// The bytes are UTF-8, UTF-16 with a byte order mark, or else of the NeXTSTEP set. Throws
/// `PropertyListError`.
PropertyValue parseOld(std::span<const std::uint8_t> bytes);

}  // namespace zeb::propertyList
