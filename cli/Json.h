#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zeb::cli {

struct JsonField;

/// An object: its fields in output order.
using JsonFields = std::vector<JsonField>;

/// A JSON value. An empty optional is null.
struct JsonValue {
    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string,
                 std::shared_ptr<const JsonFields>>
        value;

    JsonValue(std::nullptr_t null = nullptr);
    JsonValue(bool truth);
    JsonValue(double number);
    JsonValue(const char* text);
    JsonValue(std::string text);
    JsonValue(JsonFields fields);
    template <std::signed_integral Number>
    JsonValue(Number number) : value(std::int64_t{number}) {}
    template <std::unsigned_integral Number>
    JsonValue(Number number) : value(std::uint64_t{number}) {}
    template <typename Value>
    JsonValue(const std::optional<Value>& optional)
        : JsonValue(optional ? JsonValue(*optional) : JsonValue()) {}

    // Not inline: at -O3, GCC 12 reports an inlined move of the variant as a use of uninitialised memory.
    JsonValue(const JsonValue&);
    JsonValue(JsonValue&&) noexcept;
    JsonValue& operator=(const JsonValue&);
    JsonValue& operator=(JsonValue&&) noexcept;
    ~JsonValue();
};

struct JsonField {
    const char* name;
    JsonValue value;
};

/// Returns one line of JSON (RFC 8259) in ASCII. Invalid UTF-8 becomes replacement characters.
std::string jsonLine(const JsonFields& fields);

}  // namespace zeb::cli
