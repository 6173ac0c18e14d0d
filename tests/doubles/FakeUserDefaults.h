#pragma once

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"

namespace zeb::fake {

/// Settings in memory that announce their changes.
class FakeUserDefaults final : public UserDefaults {
public:
    explicit FakeUserDefaults(NotificationCenter& notifications) : m_notifications(notifications) {}

    std::optional<PropertyValue> object(std::string_view key) const override {
        const auto found = m_values.find(key);
        return found != m_values.end() ? std::optional(found->second) : std::nullopt;
    }
    PropertyDictionary dictionaryRepresentation() const override { return m_values; }
    void set(std::string_view key, const PropertyValue& value) override {
        if (object(key) == value) return;
        m_values.insert_or_assign(std::string(key), value);
        m_notifications.post(userDefaultsDidChangeNotification);
    }
    void remove(std::string_view key) override {
        const auto found = m_values.find(key);
        if (found == m_values.end()) return;
        m_values.erase(found);
        m_notifications.post(userDefaultsDidChangeNotification);
    }

private:
    NotificationCenter& m_notifications;
    PropertyDictionary m_values;
};

}  // namespace zeb::fake
