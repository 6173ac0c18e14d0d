#include "platform/text/URL.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "platform/text/PathName.h"

namespace zeb {
namespace {

constexpr auto npos = std::string_view::npos;

// Characters are classified as ASCII, independent of the locale.
bool isDecimalDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

char lowercase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool isEqualIgnoringCase(std::string_view first, std::string_view second) {
    return std::ranges::equal(first, second, {}, lowercase, lowercase);
}

int hexadecimalValue(char c) {
    if (isDecimalDigit(c)) return c - '0';
    const char lower = lowercase(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isEscape(std::string_view text, std::size_t at) {
    return text[at] == '%' && at + 2 < text.size() && hexadecimalValue(text[at + 1]) >= 0 &&
           hexadecimalValue(text[at + 2]) >= 0;
}

bool isUnreserved(char c) {
    return isLetter(c) || isDecimalDigit(c) || std::string_view("-._~").find(c) != npos;
}

// Allowed characters of a part, besides unreserved characters and escapes.
constexpr std::string_view hostCharacters = "!$&'()*+,;=";
constexpr std::string_view userInfoCharacters = "!$&'()*+,;=:";
constexpr std::string_view pathCharacters = "!$&'()*+,;=:@/";
constexpr std::string_view queryCharacters = "!$&'()*+,;=:@/?";

enum class PercentSigns {
    beginEscapes,  ///< existing escapes are kept
    areThemselves,
};

std::string escaped(std::string_view part, std::string_view allowed, PercentSigns percentSigns) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(part.size());
    for (std::size_t i = 0; i < part.size(); ++i) {
        const char c = part[i];
        const bool isKept = c == '%' ? percentSigns == PercentSigns::beginEscapes && isEscape(part, i)
                                     : isUnreserved(c) || allowed.find(c) != npos;
        if (isKept) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return text;
}

std::string unescaped(std::string_view part) {
    std::string text;
    text.reserve(part.size());
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (isEscape(part, i)) {
            text += static_cast<char>(hexadecimalValue(part[i + 1]) << 4 | hexadecimalValue(part[i + 2]));
            i += 2;
        } else {
            text += part[i];
        }
    }
    return text;
}

/// Views of a text's components.
struct Parts {
    std::optional<std::string_view> scheme, userInfo, host, port, query, fragment;
    std::string_view path;
};

/// Removes the first `delimiter` and the rest from `text` and returns the rest; nothing without a delimiter.
std::optional<std::string_view> cutTail(std::string_view& text, char delimiter) {
    const std::size_t at = text.find(delimiter);
    if (at == npos) return std::nullopt;
    const std::string_view tail = text.substr(at + 1);
    text = text.substr(0, at);
    return tail;
}

void splitAuthority(std::string_view authority, Parts& parts) {
    // Split at the last "@": otherwise a user name could be taken for the host.
    if (const std::size_t at = authority.rfind('@'); at != npos) {
        parts.userInfo = authority.substr(0, at);
        authority.remove_prefix(at + 1);
    }
    const std::size_t literalEnd = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = literalEnd == npos ? npos : authority.find(':', literalEnd);
    parts.host = authority.substr(0, colon);
    if (colon != npos) parts.port = authority.substr(colon + 1);
}

/// Splits a URL as in RFC 3986, section 3 and appendix B.
Parts split(std::string_view text) {
    Parts parts;
    if (const std::size_t end = text.find_first_of(":/?#"); end != npos && text[end] == ':') {
        parts.scheme = text.substr(0, end);
        text.remove_prefix(end + 1);
    }
    parts.fragment = cutTail(text, '#');
    parts.query = cutTail(text, '?');
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const std::size_t end = std::min(text.find('/'), text.size());
        splitAuthority(text.substr(0, end), parts);
        text.remove_prefix(end);
    }
    parts.path = text;
    return parts;
}

std::string authorityText(const std::optional<std::string>& userInfo, std::string_view host,
                          const std::optional<std::string_view>& port) {
    std::string text = userInfo ? *userInfo + "@" : "";
    text += host;
    if (port) (text += ':') += *port;
    return text;
}

bool isScheme(std::string_view text) {
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return isLetter(c) || isDecimalDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

bool isIPv4(std::string_view text) {
    int numbers = 0;
    for (std::optional<std::string_view> rest = text; rest; ++numbers) {
        std::string_view number = *rest;
        rest = cutTail(number, '.');
        if (number.empty() || number.size() > 3 || !std::ranges::all_of(number, isDecimalDigit)) return false;
        int value = 0;
        for (const char digit : number)
            value = value * 10 + (digit - '0');
        if (value > 255 || (number.size() > 1 && number.front() == '0')) return false;
    }
    return numbers == 4;
}

/// Returns the number of 16-bit groups of an IPv6 address before or after its "::"; nothing if malformed.
std::optional<int> countGroups(std::string_view side, bool mayEndInIPv4) {
    if (side.empty()) return 0;
    int count = 0;
    for (std::optional<std::string_view> rest = side; rest; ++count) {
        std::string_view group = *rest;
        rest = cutTail(group, ':');
        if (!rest && mayEndInIPv4 && isIPv4(group)) {
            ++count;
        } else if (group.empty() || group.size() > 4 ||
                   !std::ranges::all_of(group, [](char c) { return hexadecimalValue(c) >= 0; })) {
            return std::nullopt;
        }
    }
    return count;
}

bool isIPv6(std::string_view text) {
    const std::size_t gap = text.find("::");
    if (gap == npos) return countGroups(text, true) == 8;
    const auto before = countGroups(text.substr(0, gap), false);
    const auto after = countGroups(text.substr(gap + 2), true);
    return before && after && *before + *after <= 7;
}

/// Returns true for "[...]" with an IPv6 address, perhaps with a zone (RFC 6874), or an address of a future
/// version.
bool isIPLiteral(std::string_view text) {
    if (text.size() < 2 || text.front() != '[' || text.back() != ']') return false;
    std::string_view address = text.substr(1, text.size() - 2);
    if (address.starts_with('v') || address.starts_with('V')) {
        const auto rest = cutTail(address, '.');
        const std::string_view version = address.substr(1);
        return rest && !rest->empty() && !version.empty() &&
               std::ranges::all_of(version, [](char c) { return hexadecimalValue(c) >= 0; }) &&
               std::ranges::all_of(
                   *rest, [](char c) { return isUnreserved(c) || userInfoCharacters.find(c) != npos; });
    }
    if (const std::size_t zoneMark = address.find("%25"); zoneMark != npos) {
        const std::string_view zone = address.substr(zoneMark + 3);
        if (zone.empty() || escaped(zone, "", PercentSigns::beginEscapes) != zone) return false;
        address = address.substr(0, zoneMark);
    }
    return isIPv6(address);
}

bool isHost(std::string_view text) {
    return text.find_first_of("[]") == npos || isIPLiteral(text);
}

/// Removes dot segments as in RFC 3986, section 5.2.4, from a file path. "" is no path, not the current
/// folder.
std::string withoutDetours(std::string_view path) {
    const bool isAbsolute = path.starts_with('/');
    std::vector<std::string_view> pieces;
    for (std::optional<std::string_view> rest = path; rest;) {
        std::string_view piece = *rest;
        rest = cutTail(piece, '/');
        if (piece.empty() || piece == ".") continue;
        if (piece != ".." || (!isAbsolute && (pieces.empty() || pieces.back() == ".."))) {
            pieces.push_back(piece);
        } else if (!pieces.empty()) {
            pieces.pop_back();
        }
    }
    if (pieces.empty()) return isAbsolute ? "/" : ".";
    std::string text;
    for (const std::string_view piece : pieces) {
        if (isAbsolute || !text.empty()) text += '/';
        text += piece;
    }
    return text;
}

bool isThisComputer(std::string_view host) {
    return host.empty() || isEqualIgnoringCase(host, "localhost");
}

std::string escapedPath(std::string_view path) {
    return escaped(path, pathCharacters, PercentSigns::areThemselves);
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty() || std::ranges::any_of(text, isControl)) return std::nullopt;
    const Parts parts = split(text);
    if (parts.scheme && !isScheme(*parts.scheme)) return std::nullopt;
    if (parts.host && !isHost(*parts.host)) return std::nullopt;
    if (parts.port && !std::ranges::all_of(*parts.port, isDecimalDigit)) return std::nullopt;

    const auto clean = [](std::string_view part, std::string_view allowed) {
        return escaped(part, allowed, PercentSigns::beginEscapes);
    };
    std::string result;
    if (parts.scheme) (result += *parts.scheme) += ':';
    if (parts.host) {
        const auto userInfo =
            parts.userInfo ? std::optional(clean(*parts.userInfo, userInfoCharacters)) : std::nullopt;
        const bool isLiteral = parts.host->starts_with('[');
        const std::string host = isLiteral ? std::string(*parts.host) : clean(*parts.host, hostCharacters);
        (result += "//") += authorityText(userInfo, host, parts.port);
    }
    result += clean(parts.path, pathCharacters);
    if (parts.query) (result += '?') += clean(*parts.query, queryCharacters);
    if (parts.fragment) (result += '#') += clean(*parts.fragment, queryCharacters);
    return URL(std::move(result));
}

URL URL::forFile(std::string_view path) {
    std::string whole;
    if (!path.starts_with('/')) {
        std::error_code error;
        whole = std::filesystem::current_path(error).string();
        // A removed current folder has no path: keep the relative path.
        if (error || whole.empty()) return URL("file:" + escapedPath(path));
        if (!path.empty() && !whole.ends_with('/')) whole += '/';
    }
    whole += path;
    return URL("file://" + escapedPath(whole));
}

URL::Components URL::components() const {
    const auto copied = [](const std::optional<std::string_view>& part) {
        return part ? std::optional<std::string>(*part) : std::nullopt;
    };
    const Parts parts = split(m_text);
    return {.scheme = copied(parts.scheme),
            .userInfo = copied(parts.userInfo),
            .host = copied(parts.host),
            .port = copied(parts.port),
            .path = std::string(parts.path),
            .query = copied(parts.query),
            .fragment = copied(parts.fragment)};
}

std::optional<std::string> URL::host() const {
    const auto host = split(m_text).host;
    return host ? std::optional(unescaped(*host)) : std::nullopt;
}

std::optional<std::vector<URL::QueryItem>> URL::queryItems() const {
    const auto query = split(m_text).query;
    if (!query) return std::nullopt;
    std::vector<QueryItem> items;
    if (query->empty()) return items;
    items.reserve(1 + static_cast<std::size_t>(std::ranges::count(*query, '&')));
    for (std::optional<std::string_view> rest = query; rest;) {
        std::string_view name = *rest;
        rest = cutTail(name, '&');
        const auto value = cutTail(name, '=');
        items.push_back({unescaped(name), value ? std::optional(unescaped(*value)) : std::nullopt});
    }
    return items;
}

bool URL::isFileURL() const {
    const auto scheme = split(m_text).scheme;
    return scheme && isEqualIgnoringCase(*scheme, "file");
}

bool URL::isLocalFile() const {
    return isFileURL() && !path().empty() && isThisComputer(split(m_text).host.value_or(""));
}

std::string URL::path() const {
    std::string path = unescaped(split(m_text).path);
    if (path.find('\0') != npos) path.clear();
    return path;
}

std::string URL::pathExtension() const {
    const std::string whole = path();
    return std::string(zeb::pathExtension(whole));
}

bool URL::hasExtension(std::string_view extension) const {
    const auto lowerCased = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    return std::ranges::equal(pathExtension(), extension, {}, lowerCased);
}

URL URL::standardizedFileURL() const {
    const std::string given = path();
    if (!isFileURL() || given.empty()) return *this;
    const std::string clean = escapedPath(withoutDetours(given));
    if (!clean.starts_with('/')) return URL("file:" + clean);
    const Parts parts = split(m_text);
    const std::string_view host = parts.host.value_or("");
    if (isThisComputer(host)) return URL("file://" + clean);
    const auto userInfo = parts.userInfo ? std::optional<std::string>(*parts.userInfo) : std::nullopt;
    return URL("file://" + authorityText(userInfo, host, parts.port) + clean);
}

}  // namespace zeb
