#include "ui/presets/UserPresetJSON.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "platform/settings/PropertyList.h"

namespace zeb {
namespace {

using JSON = nlohmann::json;

/// The elements of an array of objects.
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

}  // namespace zeb
