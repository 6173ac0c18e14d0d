#include "ui/presets/StoredPresets.h"

#include <QChar>
#include <QString>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/settings/PropertyList.h"
#include "platform/text/UTF8.h"

namespace zeb {
namespace {

using JSON = nlohmann::json;

/// Parses an array of objects.
std::optional<JSON> parseObjects(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > propertyList::largestSize) return std::nullopt;
    auto json = JSON::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!json.is_array()) return std::nullopt;
    if (!std::ranges::all_of(json, [](const JSON& element) { return element.is_object(); }))
        return std::nullopt;
    return json;
}

const JSON* find(const JSON& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() ? &*found : nullptr;
}

std::optional<std::string> text(const JSON* value) {
    if (value == nullptr || !value->is_string()) return std::nullopt;
    return value->get_ref<const std::string&>();
}

std::optional<std::int64_t> wholeNumber(const JSON* value) {
    if (value == nullptr) return std::nullopt;
    if (value->is_number_unsigned()) {
        const auto number = value->get<std::uint64_t>();
        if (number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    if (value->is_number_integer()) return value->get<std::int64_t>();
    if (value->is_number_float()) {
        const auto number = value->get<double>();
        if (std::trunc(number) != number || number < -0x1p63 || number >= 0x1p63) return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    return std::nullopt;
}

std::optional<std::string> standardUUID(std::string_view text) {
    std::string id;
    for (const char character : text) {
        const bool isDigit = character >= '0' && character <= '9';
        const bool isLower = character >= 'a' && character <= 'f';
        const bool isUpper = character >= 'A' && character <= 'F';
        const bool isDash = id.size() == 8 || id.size() == 13 || id.size() == 18 || id.size() == 23;
        if (isDash ? character != '-' : !isDigit && !isLower && !isUpper) return std::nullopt;
        id.push_back(isLower ? static_cast<char>(character - 'a' + 'A') : character);
    }
    if (id.size() != 36) return std::nullopt;
    return id;
}

PropertyDictionary recordOf(const JSON& object) {
    PropertyDictionary record;
    for (const auto& [key, value] : object.items()) {
        if (value.is_string()) {
            record.insert_or_assign(key, value.get<std::string>());
        } else if (value.is_boolean()) {
            record.insert_or_assign(key, value.get<bool>());
        } else if (const auto number = value.is_number_float() ? std::nullopt : wholeNumber(&value)) {
            record.insert_or_assign(key, *number);
        } else if (value.is_number()) {
            record.insert_or_assign(key, value.get<double>());
        }
    }
    return record;
}

}  // namespace

std::optional<std::vector<UserPreset>> decodeUserPresets(std::span<const std::uint8_t> json) {
    const auto objects = parseObjects(json);
    if (!objects) return std::nullopt;
    std::vector<UserPreset> presets;
    for (const JSON& object : *objects) {
        const auto id = text(find(object, "id"));
        const auto name = text(find(object, "name"));
        const auto width = wholeNumber(find(object, "width"));
        const auto height = wholeNumber(find(object, "height"));
        if (!id || !name || !width || !height) return std::nullopt;
        presets.push_back({*id, *name, *width, *height});
    }
    return presets;
}

std::optional<std::vector<UserPreset>> decodeEditorPresets(std::span<const std::uint8_t> json) {
    auto presets = decodeUserPresets(json);
    if (!presets) return std::nullopt;
    for (UserPreset& preset : *presets) {
        auto id = standardUUID(preset.id);
        if (!id) return std::nullopt;
        preset.id = *std::move(id);
    }
    return presets;
}

std::optional<PropertyData> encodeUserPresets(const std::vector<UserPreset>& presets) {
    auto array = nlohmann::ordered_json::array();
    for (const UserPreset& preset : presets) {
        array.push_back(
            {{"id", preset.id}, {"name", preset.name}, {"width", preset.width}, {"height", preset.height}});
    }
    try {
        const std::string written = array.dump();
        return PropertyData(written.begin(), written.end());
    } catch (const nlohmann::ordered_json::type_error&) {
        return std::nullopt;
    }
}

std::optional<std::vector<PropertyDictionary>> decodeRecords(std::span<const std::uint8_t> json) {
    const auto objects = parseObjects(json);
    if (!objects) return std::nullopt;
    std::vector<PropertyDictionary> records;
    for (const JSON& object : *objects)
        records.push_back(recordOf(object));
    return records;
}

namespace {

using Keys = std::array<std::string_view, 3>;

std::optional<std::int64_t> integerIn(std::string_view text) {
    std::string digits;
    for (const char32_t character : decodeUTF8(text)) {
        if (!QChar::isNumber(character)) continue;
        if (character < '0' || character > '9') return std::nullopt;
        digits.push_back(static_cast<char>(character));
    }
    std::int64_t number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec != std::errc()) return std::nullopt;
    return number;
}

std::optional<std::string> firstText(const PropertyDictionary& record, const Keys& keys) {
    for (const std::string_view key : keys) {
        const auto found = record.find(key);
        const auto* text = found != record.end() ? found->second.as<std::string>() : nullptr;
        if (text != nullptr) return *text;
    }
    return std::nullopt;
}

std::int64_t firstInteger(const PropertyDictionary& record, const Keys& keys) {
    for (const std::string_view key : keys) {
        const auto found = record.find(key);
        if (found == record.end()) continue;
        if (const auto number = lenientInteger(found->second)) return *number;
    }
    return 0;
}

/// Independent of the user's locale: case rules of a locale would change the ids of presets.
std::string lowerCased(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toLower().toStdString();
}

}  // namespace

std::optional<std::int64_t> lenientInteger(const PropertyValue& value) {
    if (const auto* number = value.as<std::int64_t>()) return *number;
    if (const auto* number = value.as<double>()) {
        // This form of the comparison also rejects NaN.
        if (!(*number >= -0x1p63 && *number < 0x1p63)) return std::nullopt;
        return static_cast<std::int64_t>(*number);
    }
    if (const auto* text = value.as<std::string>()) return integerIn(*text);
    return std::nullopt;
}

std::string makePresetID(std::string_view name, std::int64_t width, std::int64_t height,
                         const std::optional<std::string>& rawID) {
    if (rawID && !rawID->empty()) return *rawID;
    std::string stem = lowerCased(trimmed(name));
    if (stem.empty()) stem = "preset";
    for (char& character : stem) {
        if (character == ' ') character = '_';
    }
    return stem + "_" + std::to_string(width) + "x" + std::to_string(height);
}

std::vector<UserPreset> parsePresetDictionaries(const std::vector<PropertyDictionary>& records) {
    std::vector<UserPreset> presets;
    for (const PropertyDictionary& record : records) {
        std::string name = firstText(record, {"name", "title", "label"}).value_or("Preset");
        const std::int64_t width = firstInteger(record, {"width", "w", "presetW"});
        const std::int64_t height = firstInteger(record, {"height", "h", "presetH"});
        if (width < 1 || height < 1) continue;
        std::string id = makePresetID(name, width, height, firstText(record, {"id", "uuid", "identifier"}));
        presets.push_back({std::move(id), std::move(name), width, height});
    }
    return presets;
}

void mergePresets(PresetCollection& collection, std::vector<UserPreset> incoming) {
    for (UserPreset& preset : incoming) {
        const auto [entry, isNew] = collection.try_emplace(preset.id, preset);
        if (!isNew && trimmed(entry->second.name).empty() && !trimmed(preset.name).empty())
            entry->second = std::move(preset);
    }
}

namespace {

char lowerLatin(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool mentionsPresets(std::string_view key) {
    static constexpr std::string_view word = "preset";
    const auto isSame = [](char left, char right) { return lowerLatin(left) == right; };
    return std::search(key.begin(), key.end(), word.begin(), word.end(), isSame) != key.end();
}

/// Ignores elements that are not dictionaries.
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
    // In key order, so that the result is deterministic.
    for (const auto& [key, value] : defaults.dictionaryRepresentation()) {
        if (mentionsPresets(key) || std::ranges::find(legacyPresetKeys, key) != legacyPresetKeys.end())
            mergePresets(collection, presetsIn(value));
    }
    std::vector<UserPreset> presets;
    for (const auto& [id, preset] : collection)
        presets.push_back(preset);
    // Stable: presets with the same name keep the order of their ids.
    std::ranges::stable_sort(presets, isBefore, &UserPreset::name);
    return presets;
}

void postApplyPreset(NotificationCenter& notifications, std::int64_t width, std::int64_t height) {
    notifications.post(applyPresetNotification, {{"width", width}, {"height", height}});
}

std::vector<UserPreset> menuUserPresets(const UserDefaults& defaults) {
    const auto bytes = defaults.data(userPresetsKey);
    return bytes ? decodeEditorPresets(*bytes).value_or(std::vector<UserPreset>())
                 : std::vector<UserPreset>();
}

}  // namespace zeb
