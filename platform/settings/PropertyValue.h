#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zeb {

class PropertyValue;

using PropertyArray = std::vector<PropertyValue>;
using PropertyDictionary = std::map<std::string, PropertyValue, std::less<>>;
using PropertyData = std::vector<std::uint8_t>;

/// A value of a property list: a whole number, a real number, a boolean, a text (UTF-8), bytes, an array or a
/// dictionary. Rare kinds, such as dates, are not supported.
class PropertyValue {
public:
    using Value = std::variant<std::int64_t, double, bool, std::string, PropertyData, PropertyArray,
                               PropertyDictionary>;

    PropertyValue(std::int64_t number) : m_value(number) {}
    PropertyValue(int number) : m_value(std::int64_t{number}) {}
    PropertyValue(double number) : m_value(number) {}
    PropertyValue(bool truth) : m_value(truth) {}
    PropertyValue(std::string text) : m_value(std::move(text)) {}
    PropertyValue(const char* text) : m_value(std::string(text)) {}
    PropertyValue(PropertyData bytes) : m_value(std::move(bytes)) {}
    PropertyValue(PropertyArray array) : m_value(std::move(array)) {}
    PropertyValue(PropertyDictionary dictionary) : m_value(std::move(dictionary)) {}

    /// Returns the value as a T, one of the kinds above; nullptr if it is of another kind.
    template <typename T>
    const T* as() const {
        return std::get_if<T>(&m_value);
    }

    const Value& value() const noexcept { return m_value; }
    bool operator==(const PropertyValue&) const = default;

private:
    Value m_value;
};

}  // namespace zeb
