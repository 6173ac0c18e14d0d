#include "ui/presets/LenientPresets.h"

#include <QChar>
#include <QString>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

#include "platform/text/TextTrim.h"
#include "platform/text/UTF8.h"

namespace zeb {
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

}  // namespace zeb
