#include "platform/LocalizedText.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/StringTable.h"
#include "platform/TextFormat.h"
#include "platform/TextLocale.h"

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
    const std::string* text = texts().table.find(key);
    if (!text) return std::string(key);
    if (arguments.empty()) return *text;
    return formatText(*text, arguments, textLocale().decimalMark);
}

}  // namespace zeb
