#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace zeb {

/// An argument of a localised text: a whole number (%lld), a real number (%f, %.2f) or a text (%@).
using TextArgument = std::variant<std::int64_t, double, std::string>;

/// Looks `key` up in the application's string table of the language in use (TextLocale.h) and fills
/// `arguments` into its specifiers (TextFormat.h). A key that the table does not have comes back as itself.
/// Callable from any thread.
std::string localizedText(std::string_view key, std::initializer_list<TextArgument> arguments = {});
std::string localizedText(std::string_view key, std::span<const TextArgument> arguments);

}  // namespace zeb
