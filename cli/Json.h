#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zeb::cli {

struct JsonField;

/// An object: its fields in the order of the output.
using JsonFields = std::vector<JsonField>;

/// A value of JSON. An empty optional value is null.
struct JsonValue {
    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, JsonFields> value;

    JsonValue(std::nullptr_t null = nullptr) : value(null) {}
    JsonValue(bool truth) : value(truth) {}
    template <std::signed_integral Number>
    JsonValue(Number number) : value(std::int64_t{number}) {}
    template <std::unsigned_integral Number>
    JsonValue(Number number) : value(std::uint64_t{number}) {}
    JsonValue(double number) : value(number) {}
    JsonValue(const char* text) : value(std::string(text)) {}
    JsonValue(std::string text) : value(std::move(text)) {}
    JsonValue(JsonFields fields) : value(std::move(fields)) {}
    template <typename Value>
    JsonValue(const std::optional<Value>& optional)
        : JsonValue(optional ? JsonValue(*optional) : JsonValue()) {}
};

struct JsonField {
    const char* name;
    JsonValue value;
};

/// One line of JSON (RFC 8259) in ASCII; text that is not UTF-8 gets replacement characters.
std::string jsonLine(const JsonFields& fields);

}  // namespace zeb::cli
