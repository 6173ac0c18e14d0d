// Loads presets from any value under a legacy key: the result is a sorted list that can be stored and read
// again, or nothing.

#include <set>

#include "fuzz/FuzzInput.h"
#include "platform/settings/PropertyList.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "ui/presets/PresetEditor.h"
#include "ui/presets/StoredPresets.h"

using namespace zeb;

namespace {

void checkCollected(const UserDefaults& defaults) {
    const auto presets = collectUserPresets(defaults, isBeforeInAnyLanguage);
    std::set<std::string> ids;
    for (const UserPreset& preset : presets)
        fuzz::require(ids.insert(preset.id).second, "ids are unique");
    fuzz::require(std::ranges::is_sorted(presets, isBeforeInAnyLanguage, &UserPreset::name),
                  "sorted by name");
    const auto written = encodeUserPresets(presets);
    fuzz::require(written && decodeUserPresets(*written) == presets, "presets come back as they were");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes bytes(data, data + size);
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults(notifications);
    PresetEditor editor(defaults, notifications);
    defaults.set("userPresetsData", bytes);
    checkCollected(defaults);
    try {
        defaults.set("customPresets", propertyList::parse(bytes));
        checkCollected(defaults);
    } catch (const PropertyListError&) {
    }
    defaults.set(userPresetsKey, bytes);
    fuzz::require(editor.userPresets() == menuUserPresets(defaults), "editor and menu read the same");
    editor.addUserPreset("added", 640, 480);
    fuzz::require(editor.userPresets() == menuUserPresets(defaults), "and what is stored");
    return 0;
}
