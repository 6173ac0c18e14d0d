#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

/// A uniform resource locator or a relative reference (RFC 3986), kept as the text that it was made from:
/// nothing is lower-cased, resolved or normalised, and two are equal when their texts are. The text holds
/// nothing but the characters that the RFC allows. A value; every operation takes time linear in the text.
class URL {
public:
    /// The parts of a URL as they stand in its text, percent escapes included. What is absent (not merely
    /// empty) is nothing.
    struct Components {
        std::optional<std::string> scheme;
        std::optional<std::string> userInfo;
        std::optional<std::string>
            host;  ///< present, perhaps empty, when the authority's "//" is; IPv6 in []
        std::optional<std::string> port;
        std::string path;
        std::optional<std::string> query;
        std::optional<std::string> fragment;
    };
    struct QueryItem {
        std::string name;                  ///< percent escapes resolved, as in the value; "+" stays "+"
        std::optional<std::string> value;  ///< what follows the first "="; nothing without one

        bool operator==(const QueryItem&) const = default;
    };

    /// Characters that merely need it (blanks, umlauts, brackets, bytes that are no UTF-8, a "%" without two
    /// hexadecimal digits) are percent-escaped byte by byte. Nothing when `text` is no URL all the same: it
    /// is empty, holds a control character, or has a malformed scheme, port or IP literal.
    static std::optional<URL> parse(std::string_view text);
    /// The file URL of a path, whose bytes may be any; a relative path is taken from the current folder.
    static URL forFile(std::string_view path);

    const std::string& text() const noexcept { return m_text; }
    Components components() const;
    /// The host with percent escapes resolved.
    std::optional<std::string> host() const;
    /// The items of the query in order: none for an empty query, nothing without a query.
    std::optional<std::vector<QueryItem>> queryItems() const;

    /// Whether the scheme is "file", in any case.
    bool isFileURL() const;
    /// Whether it is a file URL with a path on this computer: without a host, or with the host "localhost" in
    /// any case.
    bool isLocalFile() const;
    /// The path with percent escapes resolved; for a file URL the file's path, byte by byte. Empty when the
    /// path holds an escaped NUL, so that nobody opens what stands before it.
    std::string path() const;
    /// Of the path with its escapes resolved, as `zeb::pathExtension` finds it.
    std::string pathExtension() const;
    /// Whether that is `extension` (given in lower case) in any case of its ASCII letters.
    bool hasExtension(std::string_view extension) const;
    /// A file URL in the one form that all spellings of its path share: ".", "..", doubled slashes and a
    /// slash at the end resolved in the path's text (links are not looked at), the same escapes, no host
    /// where it is this machine, no query or fragment. A file URL without a path and any other URL as it is.
    URL standardizedFileURL() const;

    bool operator==(const URL&) const = default;

private:
    explicit URL(std::string text) : m_text(std::move(text)) {}

    std::string m_text;
};

}  // namespace zeb
