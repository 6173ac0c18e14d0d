#include "platform/posix/PropertyListDefaults.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <utility>

#include "platform/FolderWatch.h"
#include "platform/posix/PropertyListFile.h"

namespace zeb {
namespace {

/// Long enough for whoever writes several files or keys at once, too short to be noticed.
constexpr std::chrono::milliseconds patience{100};

void warnOnStandardError(const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
}

PropertyDictionary dictionaryOf(const PropertyListTree& tree) {
    const auto value = tree.value();
    const auto* dictionary = value ? value->as<PropertyDictionary>() : nullptr;
    return dictionary != nullptr ? *dictionary : PropertyDictionary();
}

}  // namespace

/// Shared with the work that waits on the main actor, which looks whether it is still there.
class PropertyListDefaults::Store : public std::enable_shared_from_this<Store> {
public:
    Store(const std::string& path, NotificationCenter& notifications, MainActor& mainActor, Warn warn)
        : m_notifications(notifications),
          m_mainActor(mainActor),
          m_warn(warn ? std::move(warn) : warnOnStandardError),
          m_file(path, m_warn) {}

    void open() {
        try {
            m_file.prepare();
            if (auto tree = m_file.readIfChanged()) m_tree = *std::move(tree);
        } catch (const std::runtime_error& error) {
            m_warn(std::string("The settings cannot be read: ") + error.what());
        }
        m_values = dictionaryOf(m_tree);
        watch();
    }

    const PropertyDictionary& values() const { return m_values; }

    /// Sets the key, or removes it if there is no value.
    void change(const std::string& key, std::optional<PropertyValue> value) {
        m_unsaved.insert_or_assign(key, std::move(value));
        applyUnsaved(m_tree);
        save();
        m_notifications.post(userDefaultsDidChangeNotification);
    }

    /// Once more, after it has failed.
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
        watch();
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

    void reload() {
        m_isReloading = false;
        try {
            auto tree = m_file.readIfChanged();
            watch();
            if (!tree) return;
            m_tree = *std::move(tree);
        } catch (const std::runtime_error&) {
            return;  // what we have stays; the next saving tells what is wrong
        }
        applyUnsaved(m_tree);
        PropertyDictionary values = dictionaryOf(m_tree);
        if (values == m_values) return;
        m_values = std::move(values);
        m_notifications.post(userDefaultsDidChangeNotification);
    }

    void reloadSoon() {
        if (std::exchange(m_isReloading, true)) return;
        m_mainActor.postAfter(patience, [weak = weak_from_this()] {
            if (const auto store = weak.lock()) store->reload();
        });
    }

    /// The folder of the file and, where that is a link, of the file that it leads to.
    void watch() {
        std::vector<FolderWatch::Place> places;
        for (const std::filesystem::path path : {m_file.path(), m_file.target()}) {
            const auto folder = path.parent_path().empty() ? "." : path.parent_path().string();
            const FolderWatch::Place place{folder, path.filename().string()};
            if (places.empty() || places.front() != place) places.push_back(place);
        }
        if (m_watch && m_watch->isComplete() && m_watch->places() == places) return;
        m_watch.reset();
        const auto changed = [weak = weak_from_this(), &actor = m_mainActor] {
            actor.post([weak] {
                if (const auto store = weak.lock()) store->reloadSoon();
            });
        };
        m_watch = std::make_unique<FolderWatch>(std::move(places), changed);
        // What changed while nobody watched.
        if (m_watch->isComplete()) changed();
    }

    NotificationCenter& m_notifications;
    MainActor& m_mainActor;
    Warn m_warn;
    PropertyListFile m_file;
    PropertyListTree m_tree;
    PropertyDictionary m_values;  ///< of the tree
    std::map<std::string, std::optional<PropertyValue>> m_unsaved;
    bool m_hasWarned = false;
    bool m_isReloading = false;
    std::unique_ptr<FolderWatch> m_watch;
};

PropertyListDefaults::PropertyListDefaults(const std::string& path, NotificationCenter& notifications,
                                           MainActor& mainActor, Warn warn)
    : m_store(std::make_shared<Store>(path, notifications, mainActor, std::move(warn))) {
    m_store->open();
}

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
    // Also a value of a kind that is not shown.
    if (m_store->contains(std::string(key))) m_store->change(std::string(key), std::nullopt);
}

}  // namespace zeb
