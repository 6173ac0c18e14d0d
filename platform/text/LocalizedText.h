#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Language and number format of texts for the user.
struct TextLocale {
    std::string language = "en";    ///< one of `textLanguages`
    std::string decimalMark = ".";  ///< between whole part and decimals of a number

    bool operator==(const TextLocale&) const = default;
};

/// Returns the languages with string tables, by their ISO 639-1 codes; the first is the fallback.
std::vector<std::string_view> textLanguages();

/// Returns the language of `textLanguages` that comes first in `preferred`, a list of locale names such as
/// "de-AT" or "en_GB.UTF-8"; the fallback if none does.
std::string bestTextLanguage(const std::vector<std::string>& preferred);

/// Returns the locale of messages from the environment, as gettext does: the first of LC_ALL, LC_MESSAGES and
/// LANG that is not empty, preceded by the languages of LANGUAGE unless that is "C" or "POSIX". English by
/// default. Numbers keep the dot, so that scripts can read them.
TextLocale environmentTextLocale();

/// Sets the locale of `localizedText`; the default is English. Call it before other threads use texts.
void setTextLocale(const TextLocale& locale);
const TextLocale& textLocale();

/// Returns the text of `key` in the string table of the current language, with `arguments` filled into its
/// specifiers (TextFormat.h). An unknown key is returned unchanged. May be called from any thread.
std::string localizedText(std::string_view key, std::initializer_list<TextArgument> arguments = {});
std::string localizedText(std::string_view key, std::span<const TextArgument> arguments);
std::string localizedText(const KeyedText& text);

/// Returns the English text, with a dot for the decimals: the default description of errors.
std::string englishText(const KeyedText& text);

}  // namespace zeb
