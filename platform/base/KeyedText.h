#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace zeb {

struct KeyedText;

/// An argument of a localised text: a whole number (%lld), a real number (%f, %.2f), a text (%@), or a text
/// with a key (%@).
using TextArgument = std::variant<std::int64_t, double, std::string, KeyedText>;

/// A localisable text: a key of the string tables (resources/strings/) and the arguments of its text.
/// `localizedText` (LocalizedText.h) returns the text in the current language.
struct KeyedText {
    std::string key;
    std::vector<TextArgument> arguments = {};
};

}  // namespace zeb
