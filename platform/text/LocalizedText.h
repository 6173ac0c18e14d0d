#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Looks `key` up in the application's string table of the language in use (TextLocale.h) and fills
/// `arguments` into its specifiers (TextFormat.h). A key that the table does not have comes back as itself.
/// Callable from any thread.
std::string localizedText(std::string_view key, std::initializer_list<TextArgument> arguments = {});
std::string localizedText(std::string_view key, std::span<const TextArgument> arguments);
std::string localizedText(const KeyedText& text);

/// The same in English, with a dot for the decimals: the description of errors that no other words are agreed
/// for.
std::string englishText(const KeyedText& text);

}  // namespace zeb
