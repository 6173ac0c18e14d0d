#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

#include "platform/PropertyValue.h"

namespace zeb {

/// Bytes that are no property list, or one beyond the bounds below. The text says what is wrong.
class PropertyListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Property lists: settings, and the presets that programs keep in them.
///
/// Three forms are read: XML, binary ("bplist00") and the old text form (`OldPropertyList.h`). Lists beyond
/// the bounds are refused before any memory is taken for what they promise: entity declarations, nesting
/// without end, a binary list whose values contain themselves or share parts until they fill the memory.
namespace propertyList {

inline constexpr std::size_t largestSize = std::size_t{16} << 20;  ///< bytes of a list
inline constexpr int greatestDepth = 200;                          ///< arrays and dictionaries in each other
inline constexpr std::size_t largestCount = 100'000;  ///< values, each counted wherever it stands

/// Reads a property list of any form. Dates and references (kinds that PropertyValue does not hold) are left
/// out of the array or dictionary that holds them; whole numbers from 2^63 on become real numbers; of equal
/// keys the last counts. Texts are UTF-8, repaired where they are not. Throws `PropertyListError` and nothing
/// else but `std::bad_alloc`.
PropertyValue parse(std::span<const std::uint8_t> bytes);

/// The XML form, UTF-8. Characters that XML cannot hold become U+FFFD. Throws `PropertyListError` for a value
/// that `parse` would refuse.
PropertyData writeXML(const PropertyValue& value);

}  // namespace propertyList
}  // namespace zeb
