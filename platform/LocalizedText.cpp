#include "platform/LocalizedText.h"

#include <span>

#include "platform/StringTable.h"
#include "platform/TextFormat.h"

namespace zeb {
namespace embedded {

std::string_view englishStrings();  // generated from resources/strings/en.strings

}  // namespace embedded

std::string localizedText(std::string_view key, std::initializer_list<TextArgument> arguments) {
    static const StringTable table = StringTable::parse(embedded::englishStrings());
    const std::string* text = table.find(key);
    if (!text) return std::string(key);
    if (arguments.size() == 0) return *text;
    return formatText(*text, std::span(arguments.begin(), arguments.size()));
}

}  // namespace zeb
