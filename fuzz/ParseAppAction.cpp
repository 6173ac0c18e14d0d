// Parses requests to the application: any text is a URL or none; a path survives the way through its URL, and
// a target through its request.

#include <filesystem>
#include <string>

#include "app/Requests.h"
#include "fuzz/FuzzInput.h"

using namespace zeb;

namespace {

/// Joins the components of a URL (RFC 3986, section 5.3).
std::string joined(const URL::Components& parts) {
    std::string text;
    if (parts.scheme) text += *parts.scheme + ":";
    if (parts.host) {
        text += "//";
        if (parts.userInfo) text += *parts.userInfo + "@";
        text += *parts.host;
        if (parts.port) text += ":" + *parts.port;
    }
    text += parts.path;
    if (parts.query) text += "?" + *parts.query;
    if (parts.fragment) text += "#" + *parts.fragment;
    return text;
}

void checkURL(const URL& url) {
    fuzz::require(URL::parse(url.text()) == url, "a URL's text is that URL");
    fuzz::require(joined(url.components()) == url.text(), "its components make up its text");
    const URL standard = url.standardizedFileURL();
    fuzz::require(standard.standardizedFileURL() == standard, "a standardised URL stays as it is");
    fuzz::require(URL::parse(standard.text()) == standard, "and is a URL");
}

void checkPath(const std::string& path) {
    const URL file = URL::forFile(path);
    checkURL(file);
    const bool hasNUL = path.find('\0') != std::string::npos;
    fuzz::require(file.path() == (hasNUL ? "" : path), "a path comes back, one with a NUL opens nothing");
    if (hasNUL) return;
    std::string normal = std::filesystem::path(path).lexically_normal().string();
    while (normal.size() > 1 && normal.ends_with('/'))
        normal.pop_back();
    fuzz::require(file.standardizedFileURL().path() == normal, "detours are resolved");
    fuzz::require(parseAppAction(file.text()).has_value(), "a file that is opened is a request");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkPath("/" + text);
    const auto url = URL::parse(text);
    if (url) checkURL(*url);
    fuzz::require(url || !parseAppAction(text), "a request is a URL");

    // Escape every byte, so that no part of the text has a special meaning.
    std::string item = "?x=1&url=";
    constexpr std::string_view digits = "0123456789abcdef";
    for (const std::uint8_t byte : std::span(data, size))
        item += {'%', digits[byte >> 4], digits[byte & 15]};
    const auto played = parseAppAction("zebmaker://play" + item);
    fuzz::require(played.has_value() == url.has_value(), "every URL can be played");
    fuzz::require(!url || played == AppAction(PlayAction{*url, true}), "a target comes out of its request");
    return 0;
}
