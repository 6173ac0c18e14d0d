#include "cli/Json.h"

#include <nlohmann/json.hpp>

namespace zeb::cli {
namespace {

using Json = nlohmann::ordered_json;

Json objectOf(const JsonFields& fields);

Json jsonOf(const JsonValue& value) {
    return std::visit(
        [](const auto& each) -> Json {
            if constexpr (std::is_same_v<std::decay_t<decltype(each)>, JsonFields>) {
                return objectOf(each);
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

std::string jsonLine(const JsonFields& fields) {
    return objectOf(fields).dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace zeb::cli
