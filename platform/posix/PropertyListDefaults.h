#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/MainActor.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

namespace zeb {

/// The user's settings in a property-list file, which a preferences file from another machine may simply
/// replace. Keys and values that this program does not know stay as they are.
///
/// Several instances may use one file: each change goes to the file before the next, and what other processes
/// change is announced shortly afterwards (as far as `FolderWatch` sees it). Of two changes to one key the
/// later one counts.
///
/// A file that is no dictionary is set aside beside its place, as FILE.damaged, FILE.damaged-2 and so on, at
/// the start or before a change is saved, with a warning. While saving fails, changes are kept in memory, and
/// saved with the next one or when a value is set once more; the first failure is told.
class PropertyListDefaults final : public UserDefaults {
public:
    /// Hears warnings, one line each without its end.
    using Warn = std::function<void(const std::string& line)>;

    /// `path` need not exist, nor its folder, which is created for its owner alone. The notification centre
    /// and the actor must outlive this. Without `warn` warnings go to standard error.
    PropertyListDefaults(const std::string& path, NotificationCenter& notifications, MainActor& mainActor,
                         Warn warn = {});
    ~PropertyListDefaults() override;

    /// Where this user's settings are: "zebmaker/preferences.plist" in $XDG_CONFIG_HOME or ~/.config (base
    /// directory specification), on macOS in ~/Library/Preferences. Empty without a home folder: nothing is
    /// kept then.
    static std::string standardPath();

    std::optional<PropertyValue> object(std::string_view key) const override;
    PropertyDictionary dictionaryRepresentation() const override;
    void set(std::string_view key, const PropertyValue& value) override;
    void remove(std::string_view key) override;

private:
    class Store;
    std::shared_ptr<Store> m_store;
};

}  // namespace zeb
