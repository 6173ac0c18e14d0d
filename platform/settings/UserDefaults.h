#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings/PropertyValue.h"

namespace zeb {

/// Posted without user info on the notification centre, on the main thread, after a value has changed.
inline constexpr std::string_view userDefaultsDidChangeNotification = "UserDefaultsDidChange";

/// The user's settings of this application, by key. They are persistent. Used on the main thread.
///
/// Reading never fails: unreadable values are absent. A change is visible at once and on disk when `set` and
/// `remove` return; a failure is reported on standard error.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Returns the value of `key`; nothing for an absent key.
    virtual std::optional<PropertyValue> object(std::string_view key) const = 0;
    /// Returns all keys with their values.
    virtual PropertyDictionary dictionaryRepresentation() const = 0;
    /// Sets `key` and posts the notification before it returns, unless `key` had this value. Texts are UTF-8;
    /// control characters other than tab and line breaks may be replaced by U+FFFD.
    virtual void set(std::string_view key, const PropertyValue& value) = 0;
    /// Removes `key` and posts the notification, unless there was no value.
    virtual void remove(std::string_view key) = 0;

    /// Returns the value of `key` as a whole number: a real number without its fraction, a boolean as 0 or 1,
    /// a text as the decimal number at its start (after blanks). Values beyond 64 bits become the nearest
    /// number. Returns 0 for an absent key and other kinds.
    std::int64_t integer(std::string_view key) const;
    /// Returns the value of `key` as a boolean: a number is true unless it is 0; a text is true if it starts
    /// with Y, y, T, t or a digit from 1 to 9 (after blanks, a sign and zeros). Returns false for an absent
    /// key and other kinds.
    bool boolean(std::string_view key) const;
    /// Returns the value of `key` as a text: a number in its shortest decimal form, a boolean as 1 or 0.
    /// Returns nothing for an absent key and other kinds.
    std::optional<std::string> text(std::string_view key) const;
    /// Returns the bytes of `key`; nothing for other kinds.
    std::optional<PropertyData> data(std::string_view key) const;
};

}  // namespace zeb
