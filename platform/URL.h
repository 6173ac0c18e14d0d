#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// A uniform resource locator, kept as the text that it was made from (RFC 3986). Nothing is lower-cased or
/// resolved.
class URL {
public:
    /// The parts of a URL as they stand in its text, percent escapes included. What is absent (not merely
    /// empty) is nothing.
    struct Components {
        std::optional<std::string> scheme;
        std::optional<std::string> host;  ///< present, perhaps empty, when the authority's "//" is
        std::string path;
        std::optional<std::string> query;
    };
    struct QueryItem {
        std::string name;                  ///< percent escapes resolved, as in the value
        std::optional<std::string> value;  ///< nothing without "="
    };

    /// Nothing when `text` is no URL: empty, with control characters or bytes that are no UTF-8, with a
    /// percent sign ... . Other characters that a URL must not hold as they are (blanks, umlauts) are
    /// percent-escaped.
    static std::optional<URL> parse(std::string_view text);
    /// The file URL of a path; a relative path is taken from the current folder.
    static URL forFile(std::string_view path);

    const std::string& text() const noexcept { return m_text; }
    Components components() const;
    /// The items of the query in order; nothing without a query.
    std::optional<std::vector<QueryItem>> queryItems() const;

    /// Whether the scheme is "file", in any case.
    bool isFileURL() const;
    /// The path with percent escapes resolved; for a file URL the file's path. Empty when the path holds an
    /// escaped NUL.
    std::string path() const;
    /// What follows the last dot of the path's last piece, without the dot; empty when there is none.
    std::string pathExtension() const;
    /// A file URL with "." and ".." pieces and doubled slashes resolved in its path; any other URL as it is.
    URL standardizedFileURL() const;

    bool operator==(const URL&) const = default;

private:
    explicit URL(std::string text) : m_text(std::move(text)) {}

    std::string m_text;
};

}  // namespace zeb
