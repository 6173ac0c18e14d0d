#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"

namespace zeb {

/// The user's settings in a property-list file, which a preferences file from another machine may replace.
/// Unknown keys and values stay unchanged.
///
/// Each change is saved before the next one. Saving reads the file first, so that changes of other processes
/// are kept; they become visible here at that moment. Of two changes to one key the later one counts.
///
/// A file that is not a dictionary is renamed to FILE.damaged, FILE.damaged-2 and so on, at the start or
/// before a change is saved, with a warning. If saving fails, the change is kept in memory and saved with the
/// next change, or when a value is set again; only the first failure is reported.
class PropertyListDefaults final : public UserDefaults {
public:
    /// Called for each warning, one line without a line end.
    using Warn = std::function<void(const std::string& line)>;

    /// `path` need not exist, nor its folder, which is created with access for the owner only. The
    /// notification centre must outlive this. Without `warn`, warnings go to standard error.
    PropertyListDefaults(const std::string& path, NotificationCenter& notifications, Warn warn = {});
    ~PropertyListDefaults() override;

    /// Returns the path of the user's settings: "zebmaker/preferences.plist" in $XDG_CONFIG_HOME or ~/.config
    /// (base directory specification), on macOS in ~/Library/Preferences. Empty without a home folder:
    /// settings are then not saved.
    static std::string standardPath();

    std::optional<PropertyValue> object(std::string_view key) const override;
    PropertyDictionary dictionaryRepresentation() const override;
    void set(std::string_view key, const PropertyValue& value) override;
    void remove(std::string_view key) override;

private:
    class Store;
    std::unique_ptr<Store> m_store;
};

}  // namespace zeb
