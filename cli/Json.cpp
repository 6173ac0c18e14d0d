#include "cli/Json.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace zeb::cli {
namespace {

using Json = nlohmann::ordered_json;

Json objectOf(const JsonFields& fields);

Json jsonOf(const JsonValue& value) {
    return std::visit(
        [](const auto& each) -> Json {
            if constexpr (std::is_same_v<std::decay_t<decltype(each)>, std::shared_ptr<const JsonFields>>) {
                return objectOf(*each);
            } else {
                return each;
            }
        },
        value.value);
}

Json objectOf(const JsonFields& fields) {
    Json object = Json::object();
    for (const JsonField& field : fields)
        object[field.name] = jsonOf(field.value);
    return object;
}

}  // namespace

JsonValue::JsonValue(const JsonValue&) = default;
JsonValue::JsonValue(JsonValue&&) noexcept = default;
JsonValue& JsonValue::operator=(const JsonValue&) = default;
JsonValue& JsonValue::operator=(JsonValue&&) noexcept = default;
JsonValue::~JsonValue() = default;

JsonValue::JsonValue(std::nullptr_t null) : value(null) {}
JsonValue::JsonValue(bool truth) : value(truth) {}
JsonValue::JsonValue(double number) : value(number) {}
JsonValue::JsonValue(const char* text) : value(std::string(text)) {}
JsonValue::JsonValue(std::string text) : value(std::move(text)) {}
JsonValue::JsonValue(JsonFields fields) : value(std::make_shared<const JsonFields>(std::move(fields))) {}

std::string jsonLine(const JsonFields& fields) {
    return objectOf(fields).dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace zeb::cli
