#include "conversion/plan/SettingsFile.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "conversion/plan/SettingsError.h"
#include "platform/files/FileHandle.h"
#include "platform/text/ErrorText.h"

namespace zeb {
namespace {

using JSON = nlohmann::ordered_json;
using Form = SettingRow::Form;

constexpr const char* versionKey = "zebSettings";
constexpr int version = 1;
constexpr std::uint64_t largestFile = 1 << 20;

/// Splits "colours.tone" into the group's key, which may be empty, and the key in it.
std::pair<std::string, std::string> split(const SettingRow& row) {
    const std::string path = row.path;
    const std::size_t point = path.find('.');
    if (point == std::string::npos) return {"", path};
    return {path.substr(0, point), path.substr(point + 1)};
}

/// Returns the value as a text of the setting; nothing if it has another type.
std::optional<std::string> textOf(const JSON& value, Form form) {
    switch (form) {
        case Form::text:
            if (value.is_string()) return value.get<std::string>();
            break;
        case Form::number:
            if (value.is_number()) return value.dump();
            break;
        case Form::truth:
            if (value.is_boolean()) return value.dump();
            break;
    }
    return std::nullopt;
}

/// Returns the value in JSON without line breaks, shortened for a message.
std::string shown(const JSON& value) {
    constexpr std::size_t most = 40;
    std::string text = value.dump(-1, ' ', true, JSON::error_handler_t::replace);
    if (text.size() > most) text = text.substr(0, most) + "...";
    return text;
}

JSON parse(std::string_view text) {
    try {
        return JSON::parse(text);
    } catch (const JSON::parse_error& error) {
        throw SettingsError({"error_settings_no_json_format", {static_cast<std::int64_t>(error.byte)}});
    }
}

/// Limits the depth before parsing: the parser and the destruction of values are recursive.
void checkDepth(std::string_view text) {
    constexpr int deepest = 32;
    int depth = 0;
    bool isInText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isInText && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            isInText = !isInText;
        } else if (!isInText && (text[i] == '{' || text[i] == '[')) {
            if (++depth > deepest) throw SettingsError({"error_settings_deep"});
        } else if (!isInText && (text[i] == '}' || text[i] == ']')) {
            --depth;
        }
    }
}

/// Takes the value of a row out of the document, if it is there.
void takeRow(const SettingRow& row, JSON& document, RequestedSettings& requested) {
    const auto [group, key] = split(row);
    JSON* object = &document;
    if (!group.empty()) {
        const auto found = document.find(group);
        if (found == document.end()) return;
        if (!found->is_object())
            throw SettingsError(
                {"error_settings_value_format", {group, KeyedText{"settings_object"}, shown(*found)}});
        object = &*found;
    }
    const auto found = object->find(key);
    if (found == object->end()) return;
    const std::optional<std::string> text = textOf(*found, row.form);
    if (!text || !row.take(requested, *text)) {
        throw SettingsError({"error_settings_value_format",
                             {std::string(row.path), std::string(row.expected), shown(*found)}});
    }
    object->erase(key);
    if (object->empty() && !group.empty()) document.erase(group);
}

JSON valueOf(const std::string& text, Form form) {
    return form == Form::text ? JSON(text) : JSON::parse(text);
}

}  // namespace

void readSettings(std::string_view json, RequestedSettings& requested) {
    checkDepth(json);
    JSON document = parse(json);
    if (!document.is_object()) throw SettingsError({"error_settings_no_object"});
    if (const auto found = document.find(versionKey); found != document.end()) {
        if (!found->is_number_unsigned() || found->get<std::uint64_t>() < 1)
            throw SettingsError({"error_settings_version"});
        if (found->get<std::uint64_t>() > version) throw SettingsError({"error_settings_later"});
        document.erase(versionKey);
    }
    for (const SettingRow& row : settingRows())
        takeRow(row, document, requested);
    requested.foreign = document.empty() ? "" : document.dump();
}

std::string settingsJson(const RequestedSettings& requested) {
    JSON document = JSON::object();
    document[versionKey] = version;
    for (const SettingRow& row : settingRows()) {
        const std::optional<std::string> text = row.text(requested);
        if (!text) continue;
        const auto [group, key] = split(row);
        (group.empty() ? document : document[group])[key] = valueOf(*text, row.form);
    }
    if (!requested.foreign.empty()) document.merge_patch(JSON::parse(requested.foreign));
    return document.dump(2, ' ', false, JSON::error_handler_t::replace) + "\n";
}

void readSettingsFile(const std::string& path, RequestedSettings& requested) {
    const auto file = openForReading(path);
    const std::uint64_t size = file->size();
    if (size > largestFile)
        throw SettingsError({"error_file_format", {path, KeyedText{"error_settings_large"}}});
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    const std::size_t count = file->readAt(0, bytes);
    try {
        readSettings({reinterpret_cast<const char*>(bytes.data()), count}, requested);
    } catch (const SettingsError& error) {
        throw SettingsError({"error_file_format", {path, error.text()}});
    }
}

}  // namespace zeb
