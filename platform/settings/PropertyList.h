#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

#include "platform/settings/PropertyValue.h"

namespace zeb {

/// Thrown for bytes that are not a property list, or for a list beyond the limits below. The text describes
/// the error.
class PropertyListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Property lists, the form of settings and presets.
///
/// Three forms are read: XML, binary ("bplist00") and the old text form (`OldPropertyList.h`). Lists beyond
/// the limits are rejected before memory is allocated for them: entity declarations, deep nesting, cycles,
/// and values that are shared many times.
namespace propertyList {

inline constexpr std::size_t largestSize = std::size_t{16} << 20;  ///< bytes of a list
inline constexpr int greatestDepth = 200;                          ///< nesting of arrays and dictionaries
inline constexpr std::size_t largestCount = 100'000;  ///< values; a shared value counts once per reference

/// Reads a property list of any form. Dates and references, which PropertyValue cannot hold, are left out of
/// their array or dictionary. Whole numbers from 2^63 on become real numbers. Of equal keys the last one
/// counts. Texts are UTF-8; ill-formed sequences are replaced. Throws `PropertyListError` and
/// `std::bad_alloc` only.
PropertyValue parse(std::span<const std::uint8_t> bytes);

/// Returns the XML form in UTF-8. Characters that XML cannot hold become U+FFFD. Throws `PropertyListError`
/// for a value that `parse` would reject.
PropertyData writeXML(const PropertyValue& value);

}  // namespace propertyList
}  // namespace zeb
