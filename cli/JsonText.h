#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace zeb::cli {

/// One line of JSON (RFC 8259) in ASCII; text that is not UTF-8 gets replacement characters.
inline std::string jsonLine(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace zeb::cli
