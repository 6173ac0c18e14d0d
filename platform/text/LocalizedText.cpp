#include "platform/text/LocalizedText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <variant>
#include <vector>

#include "platform/text/StringTable.h"
#include "platform/text/TextFormat.h"

namespace zeb {
namespace embedded {

// Generated from resources/strings/.
std::string_view englishStrings();
std::string_view germanStrings();

}  // namespace embedded

namespace {

struct Language {
    std::string_view code;
    std::string_view (*source)();
};
constexpr std::array languages = {Language{"en", embedded::englishStrings},
                                  Language{"de", embedded::germanStrings}};

StringTable tableOf(std::string_view code) {
    const auto* language = std::find_if(languages.begin(), languages.end(),
                                        [code](const Language& candidate) { return candidate.code == code; });
    return StringTable::parse(language == languages.end() ? languages.front().source() : language->source());
}

struct Texts {
    TextLocale locale;
    StringTable table = tableOf(locale.language);
};

Texts& texts() {
    static Texts instance;
    return instance;
}

std::string textIn(const Texts& texts, std::string_view key, std::span<const TextArgument> arguments) {
    const std::string* text = texts.table.find(key);
    if (!text) return std::string(key);
    if (arguments.empty()) return *text;
    std::vector<TextArgument> plain(arguments.begin(), arguments.end());
    for (TextArgument& argument : plain) {
        if (const auto* keyed = std::get_if<KeyedText>(&argument))
            argument = textIn(texts, keyed->key, keyed->arguments);
    }
    return formatText(*text, plain, texts.locale.decimalMark);
}

}  // namespace

std::vector<std::string_view> textLanguages() {
    std::vector<std::string_view> codes(languages.size());
    std::transform(languages.begin(), languages.end(), codes.begin(),
                   [](const Language& language) { return language.code; });
    return codes;
}

std::string bestTextLanguage(const std::vector<std::string>& preferred) {
    const auto codes = textLanguages();
    for (const std::string& name : preferred) {
        const std::string_view code = std::string_view(name).substr(0, name.find_first_of("-_.@"));
        if (std::find(codes.begin(), codes.end(), code) != codes.end()) return std::string(code);
    }
    return std::string(codes.front());
}

TextLocale environmentTextLocale() {
    const auto valueOf = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value != nullptr ? value : "");
    };
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.empty()) locale = valueOf(name);
    }
    const std::string_view name = locale.substr(0, locale.find('.'));
    if (name.empty() || name == "C" || name == "POSIX") return {};

    std::vector<std::string> preferred;
    std::string_view list = valueOf("LANGUAGE");
    while (!list.empty()) {
        preferred.emplace_back(list.substr(0, list.find(':')));
        list.remove_prefix(std::min(preferred.back().size() + 1, list.size()));
    }
    preferred.emplace_back(locale);
    return {.language = bestTextLanguage(preferred)};
}

void setTextLocale(const TextLocale& locale) {
    texts() = {locale, tableOf(locale.language)};
}

const TextLocale& textLocale() {
    return texts().locale;
}

std::string localizedText(std::string_view key, std::initializer_list<TextArgument> arguments) {
    return localizedText(key, std::span(arguments.begin(), arguments.size()));
}

std::string localizedText(std::string_view key, std::span<const TextArgument> arguments) {
    return textIn(texts(), key, arguments);
}

std::string localizedText(const KeyedText& text) {
    return textIn(texts(), text.key, text.arguments);
}

std::string englishText(const KeyedText& text) {
    static const Texts english{};
    return textIn(english, text.key, text.arguments);
}

}  // namespace zeb
