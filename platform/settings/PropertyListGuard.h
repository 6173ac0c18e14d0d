#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb::propertyList {

/// Validates a property list before libplist parses it: libplist allocates all declared values at once and
/// recurses without a limit. Both functions throw `PropertyListError` for a list beyond the limits of
/// `PropertyList.h`. Bytes that pass need not be a valid property list.

/// Checks XML: elements of property lists only, no attributes except on <plist>, no declarations.
void checkXML(std::string_view text);

/// Checks the binary form: every offset, count and reference that is reachable from the root, each value once
/// per reference.
void checkBinary(std::span<const std::uint8_t> bytes);

}  // namespace zeb::propertyList
