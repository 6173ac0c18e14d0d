#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/KeyedText.h"

namespace zeb {

/// How texts for people are written.
struct TextLocale {
    std::string language = "en";    ///< one of `textLanguages`
    std::string decimalMark = ".";  ///< between whole part and decimals of a number

    bool operator==(const TextLocale&) const = default;
};

/// The languages that there are string tables for, by their ISO 639-1 codes; the first is the fallback.
std::vector<std::string_view> textLanguages();

/// The language of `textLanguages` that comes first in `preferred`, a list of locale names such as "de-AT" or
/// "en_GB.UTF-8"; the fallback when none does.
std::string bestTextLanguage(const std::vector<std::string>& preferred);

/// The locale of messages that the environment names, as gettext does: the first of LC_ALL, LC_MESSAGES and
/// LANG that is not empty, before which come the languages of LANGUAGE unless that is "C" or "POSIX". English
/// when there is none. Numbers keep the dot, so that scripts and people read the same.
TextLocale environmentTextLocale();

/// What `localizedText` uses from now on; English until this is called. To be called before other threads ask
/// for texts.
void setTextLocale(const TextLocale& locale);
const TextLocale& textLocale();

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
