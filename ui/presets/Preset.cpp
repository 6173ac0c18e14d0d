#include "ui/presets/Preset.h"

#include <algorithm>

#include "platform/text/LocalizedText.h"

namespace zeb {
namespace {

std::int64_t orDefault(std::int64_t side, std::int64_t defaultSide) {
    return side != 0 ? side : defaultSide;
}

std::int64_t storedSide(const UserDefaults& defaults, std::string_view key, std::int64_t defaultSide) {
    const auto value = defaults.object(key);
    const bool isNumber = value && (value->as<std::int64_t>() != nullptr || value->as<double>() != nullptr);
    // Settings in the old text format contain only texts.
    return isNumber ? defaults.integer(key) : orDefault(defaults.integer(key), defaultSide);
}

}  // namespace

std::string BuiltInPreset::title() const {
    if (id == "dvd") return localizedText("DVD");
    if (id == "hd") return localizedText("HD");
    return localizedText("preset_fhd");
}

PresetSize BuiltInPreset::size(const UserDefaults& defaults) const {
    return {storedSide(defaults, widthKey, defaultSize.width),
            storedSide(defaults, heightKey, defaultSize.height)};
}

PresetSize BuiltInPreset::menuSize(const UserDefaults& defaults) const {
    return {orDefault(defaults.integer(widthKey), defaultSize.width),
            orDefault(defaults.integer(heightKey), defaultSize.height)};
}

const BuiltInPreset* findBuiltInPreset(std::string_view id) {
    const auto* found = std::ranges::find(builtInPresets, id, &BuiltInPreset::id);
    return found != builtInPresets.end() ? found : nullptr;
}

}  // namespace zeb
