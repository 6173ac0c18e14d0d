#include "platform/settings/posix/PropertyListDefaults.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <utility>

#include "platform/settings/posix/PropertyListFile.h"

namespace zeb {
namespace {

void warnOnStandardError(const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
}

PropertyDictionary dictionaryOf(const PropertyListTree& tree) {
    const auto value = tree.value();
    const auto* dictionary = value ? value->as<PropertyDictionary>() : nullptr;
    return dictionary != nullptr ? *dictionary : PropertyDictionary();
}

}  // namespace

class PropertyListDefaults::Store {
public:
    Store(const std::string& path, NotificationCenter& notifications, Warn warn)
        : m_notifications(notifications),
          m_warn(warn ? std::move(warn) : warnOnStandardError),
          m_file(path, m_warn) {
        try {
            m_file.prepare();
            if (auto tree = m_file.read()) m_tree = *std::move(tree);
        } catch (const std::runtime_error& error) {
            m_warn(std::string("The settings cannot be read: ") + error.what());
        }
        m_values = dictionaryOf(m_tree);
    }

    const PropertyDictionary& values() const { return m_values; }

    /// Sets the key, or removes it if there is no value.
    void change(const std::string& key, std::optional<PropertyValue> value) {
        m_unsaved.insert_or_assign(key, std::move(value));
        applyUnsaved(m_tree);
        save();
        m_notifications.post(userDefaultsDidChangeNotification);
    }

    /// Saves the changes again after a failure.
    void saveAgain() {
        if (m_unsaved.empty()) return;
        const PropertyDictionary former = m_values;
        save();
        if (m_values != former) m_notifications.post(userDefaultsDidChangeNotification);
    }

    bool contains(const std::string& key) const { return m_tree.contains(key); }

private:
    void save() {
        try {
            m_tree = m_file.update(m_tree, [this](PropertyListTree& tree) { applyUnsaved(tree); });
            m_unsaved.clear();
            m_hasWarned = false;
        } catch (const std::runtime_error& error) {
            if (!std::exchange(m_hasWarned, true))
                m_warn(std::string("The settings cannot be saved: ") + error.what());
        }
        m_values = dictionaryOf(m_tree);
    }

    void applyUnsaved(PropertyListTree& tree) const {
        for (const auto& [key, value] : m_unsaved) {
            if (value) {
                tree.set(key, *value);
            } else {
                tree.remove(key);
            }
        }
    }

    NotificationCenter& m_notifications;
    Warn m_warn;
    PropertyListFile m_file;
    PropertyListTree m_tree;
    PropertyDictionary m_values;  ///< of the tree
    std::map<std::string, std::optional<PropertyValue>> m_unsaved;
    bool m_hasWarned = false;
};

PropertyListDefaults::PropertyListDefaults(const std::string& path, NotificationCenter& notifications,
                                           Warn warn)
    : m_store(std::make_unique<Store>(path, notifications, std::move(warn))) {}

PropertyListDefaults::~PropertyListDefaults() = default;

std::string PropertyListDefaults::standardPath() {
    const auto absolute = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        const std::filesystem::path path = value == nullptr ? "" : value;
        return path.is_absolute() ? path : std::filesystem::path();
    };
    std::filesystem::path folder;
#ifdef __APPLE__
    if (const auto home = absolute("HOME"); !home.empty()) folder = home / "Library/Preferences";
#else
    folder = absolute("XDG_CONFIG_HOME");
    if (const auto home = absolute("HOME"); folder.empty() && !home.empty()) folder = home / ".config";
#endif
    return folder.empty() ? "" : (folder / "zebmaker/preferences.plist").string();
}

std::optional<PropertyValue> PropertyListDefaults::object(std::string_view key) const {
    const PropertyDictionary& values = m_store->values();
    const auto found = values.find(key);
    return found != values.end() ? std::optional(found->second) : std::nullopt;
}

PropertyDictionary PropertyListDefaults::dictionaryRepresentation() const {
    return m_store->values();
}

void PropertyListDefaults::set(std::string_view key, const PropertyValue& value) {
    if (object(key) == value) return m_store->saveAgain();
    m_store->change(std::string(key), value);
}

void PropertyListDefaults::remove(std::string_view key) {
    // This also removes a value of a kind that `PropertyValue` cannot hold.
    if (m_store->contains(std::string(key))) m_store->change(std::string(key), std::nullopt);
}

}  // namespace zeb
