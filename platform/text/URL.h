#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

/// A uniform resource locator or a relative reference (RFC 3986). The original text is kept: nothing is
/// lower-cased, resolved or normalised, and two URLs are equal if their texts are. The text contains only
/// characters that the RFC allows. A value type; every operation takes time linear in the text.
class URL {
public:
    /// The parts of a URL as in its text, percent escapes included. An absent part (not an empty one) is
    /// nothing.
    struct Components {
        std::optional<std::string> scheme;
        std::optional<std::string> userInfo;
        std::optional<std::string> host;  ///< present, perhaps empty, after "//"; IPv6 in []
        std::optional<std::string> port;
        std::string path;
        std::optional<std::string> query;
        std::optional<std::string> fragment;
    };
    struct QueryItem {
        std::string name;                  ///< percent escapes resolved, as in `value`; "+" stays "+"
        std::optional<std::string> value;  ///< the text after the first "="; nothing without one

        bool operator==(const QueryItem&) const = default;
    };

    /// Percent-escapes invalid characters (blanks, umlauts, brackets, bytes that are not UTF-8, a "%" without
    /// two hexadecimal digits) byte by byte. Returns nothing if `text` is empty, contains a control
    /// character, or has a malformed scheme, port or IP literal.
    static std::optional<URL> parse(std::string_view text);
    /// Returns the file URL of a path of any bytes; a relative path is taken from the current folder.
    static URL forFile(std::string_view path);

    const std::string& text() const noexcept { return m_text; }
    Components components() const;
    /// Returns the host with percent escapes resolved.
    std::optional<std::string> host() const;
    /// Returns the items of the query in order: none for an empty query, nothing without a query.
    std::optional<std::vector<QueryItem>> queryItems() const;

    /// Returns true if the scheme is "file", in any case.
    bool isFileURL() const;
    /// Returns true for a file URL with a path on this computer: without a host, or with the host "localhost"
    /// in any case.
    bool isLocalFile() const;
    /// Returns the path with percent escapes resolved; for a file URL the file's path, byte by byte. Empty if
    /// the path contains an escaped NUL: system calls would use only the part before it.
    std::string path() const;
    /// Returns the extension of the resolved path (`zeb::pathExtension`).
    std::string pathExtension() const;
    /// Returns true if the extension equals `extension` (in lower case), ignoring the case of ASCII letters.
    bool hasExtension(std::string_view extension) const;
    /// Returns the normal form of a file URL: ".", "..", doubled slashes and a slash at the end are resolved
    /// in the path's text (links are not followed), percent escapes are uniform, and the host of this
    /// machine, the query and the fragment are removed. A file URL without a path and any other URL are
    /// returned unchanged.
    URL standardizedFileURL() const;

    bool operator==(const URL&) const = default;

private:
    explicit URL(std::string text) : m_text(std::move(text)) {}

    std::string m_text;
};

}  // namespace zeb
