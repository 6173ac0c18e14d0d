// Requests from outside: any text is a URL or none, a path comes back from its URL, and a target from its
// request.

#include <algorithm>
#include <string>

#include "app/AppActionParsing.h"
#include "fuzz/FuzzInput.h"
#include "ui/MovieName.h"

using namespace zeb;

namespace {

/// Every byte as an escape, so that no part of the text can mean anything.
std::string escapedWhole(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        char escape[4];
        std::snprintf(escape, sizeof escape, "%%%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        escaped += escape;
    }
    return escaped;
}

bool isURLCharacter(char c) {
    return c > 0x20 && c < 0x7F && std::string_view("\"<>\\^`{|}").find(c) == std::string_view::npos;
}

const URL& targetOf(const AppAction& action) {
    return std::visit([](const auto& one) -> const URL& { return one.url; }, action);
}

void checkURL(const URL& url) {
    fuzz::require(URL::parse(url.text()) == url, "a URL's text is that URL");
    fuzz::require(std::ranges::all_of(url.text(), isURLCharacter), "its characters are those of URLs");
    const URL standard = url.standardizedFileURL();
    fuzz::require(standard.standardizedFileURL() == standard, "a standardised URL stays as it is");
    fuzz::require(url.isFileURL() || standard == url, "other URLs stay as they are");
}

void checkPath(const std::string& path) {
    const URL file = URL::forFile(path);
    checkURL(file);
    if (path.find('\0') != std::string::npos) {
        fuzz::require(file.path().empty(), "nothing is opened for a name with a NUL");
        return;
    }
    fuzz::require(file.path() == path, "a path comes back");
    fuzz::require(parseAppAction(file.text()).has_value(), "a file that is opened is a request");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkPath("/" + text);

    const auto url = URL::parse(text);
    if (url) checkURL(*url);
    const auto action = parseAppAction(text);
    if (action) {
        fuzz::require(url.has_value(), "a request is a URL");
        checkURL(targetOf(*action));
        if (url->isFileURL()) fuzz::require(targetOf(*action) == *url, "a file is its own target");
    }

    const std::string item = "?x=1&url=" + escapedWhole(text);
    const auto played = parseAppAction("zebmaker://play" + item);
    fuzz::require(played.has_value() == url.has_value(), "every URL can be played");
    if (!url) return 0;
    fuzz::require(played == AppAction(PlayAction{*url, true}), "a target comes out of its request");
    fuzz::require(parseAppAction("zebmaker:/encode/" + item) == AppAction(EncodeAction{*url}),
                  "with either verb");
    const AppAction byName = namesMovie(*url) ? AppAction(PlayAction{*url, true}) : EncodeAction{*url};
    fuzz::require(parseAppAction("zebmaker://Play" + item) == byName, "and by its name without");
    return 0;
}
