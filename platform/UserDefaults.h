#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/PropertyValue.h"

namespace zeb {

/// Posted without user info on the notification centre, on the main thread, after a value was changed, here
/// or by another process.
inline constexpr std::string_view userDefaultsDidChangeNotification = "UserDefaultsDidChange";

/// The user's settings of this application, by key. They outlive the process. Used on the main thread.
///
/// Reading never fails: what cannot be read is absent. A change is visible at once; it reaches the disk
/// before `set` and `remove` return, or a line on standard error says why not.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The value of `key`; nothing when there is none.
    virtual std::optional<PropertyValue> object(std::string_view key) const = 0;
    /// All keys with their values.
    virtual PropertyDictionary dictionaryRepresentation() const = 0;
    /// Announces the change, before it returns, unless `key` had this value. Texts are UTF-8 without control
    /// characters other than tab and line breaks; anything else in them may come back as U+FFFD.
    virtual void set(std::string_view key, const PropertyValue& value) = 0;
    /// Announces the change unless there was no value.
    virtual void remove(std::string_view key) = 0;

    /// The value of `key` as a whole number, converted where that makes sense: a real number loses its
    /// fraction, a boolean is 0 or 1, a text is the decimal number that it starts with (after blanks). What
    /// lies beyond 64 bits becomes the nearest number. 0 when absent, no number or of another kind.
    std::int64_t integer(std::string_view key) const;
    /// As a boolean: a number is true unless it is 0, a text when it starts with Y, y, T, t or a digit from 1
    /// to 9 (after blanks, a sign and zeros). False when absent or of another kind.
    bool boolean(std::string_view key) const;
    /// The value of `key` if it is a text; a number in its shortest decimal form, a boolean as 1 or 0;
    /// nothing otherwise.
    std::optional<std::string> text(std::string_view key) const;
    /// The bytes of `key`; nothing when its value is of another kind.
    std::optional<PropertyData> data(std::string_view key) const;
};

}  // namespace zeb
