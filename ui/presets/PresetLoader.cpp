#include "ui/presets/PresetLoader.h"

#include <algorithm>

#include "platform/settings/PropertyList.h"
#include "ui/presets/LenientPresets.h"
#include "ui/presets/UserPresetJSON.h"

namespace zeb {
namespace {

char lowerLatin(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool mentionsPresets(std::string_view key) {
    static constexpr std::string_view word = "preset";
    const auto isSame = [](char left, char right) { return lowerLatin(left) == right; };
    return std::search(key.begin(), key.end(), word.begin(), word.end(), isSame) != key.end();
}

/// Elements that are no dictionaries are passed over.
std::vector<UserPreset> presetsInArray(const PropertyArray& array) {
    std::vector<PropertyDictionary> records;
    for (const PropertyValue& element : array) {
        if (const auto* record = element.as<PropertyDictionary>()) records.push_back(*record);
    }
    return parsePresetDictionaries(records);
}

std::vector<UserPreset> presetsInPropertyList(std::span<const std::uint8_t> bytes) {
    try {
        const PropertyValue list = propertyList::parse(bytes);
        const auto* array = list.as<PropertyArray>();
        return array != nullptr ? presetsInArray(*array) : std::vector<UserPreset>();
    } catch (const PropertyListError&) {
        return {};
    }
}

std::vector<UserPreset> presetsIn(const PropertyValue& value) {
    if (const auto* bytes = value.as<PropertyData>()) return presetsInData(*bytes);
    if (const auto* array = value.as<PropertyArray>()) return presetsInArray(*array);
    return {};
}

}  // namespace

bool isBeforeInAnyLanguage(const std::string& first, const std::string& second) {
    return std::ranges::lexicographical_compare(first, second, [](char left, char right) {
        return static_cast<unsigned char>(lowerLatin(left)) < static_cast<unsigned char>(lowerLatin(right));
    });
}

std::vector<UserPreset> presetsInData(std::span<const std::uint8_t> bytes) {
    if (auto presets = decodeUserPresets(bytes)) return *std::move(presets);
    if (const auto records = decodeRecords(bytes)) return parsePresetDictionaries(*records);
    return presetsInPropertyList(bytes);
}

std::vector<UserPreset> collectUserPresets(const UserDefaults& defaults, const NameOrder& isBefore) {
    PresetCollection collection;
    // In the order of their keys, so that the same settings always give the same presets.
    for (const auto& [key, value] : defaults.dictionaryRepresentation()) {
        if (mentionsPresets(key) || std::ranges::find(legacyPresetKeys, key) != legacyPresetKeys.end())
            mergePresets(collection, presetsIn(value));
    }
    std::vector<UserPreset> presets;
    for (const auto& [id, preset] : collection)
        presets.push_back(preset);
    // Stable: those of one name stay in the order of their ids.
    std::ranges::stable_sort(presets, isBefore, &UserPreset::name);
    return presets;
}

}  // namespace zeb
