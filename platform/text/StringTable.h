#pragma once

#include <map>
#include <string>
#include <string_view>

namespace zeb {

/// Localised texts by key.
class StringTable {
public:
    /// Reads a table in UTF-8: entries `"key" = "text";` with the escapes \" \\ and \n, and comments from
    /// `//` to the end of the line. Throws `std::invalid_argument` with the line of the first mistake; a
    /// repeated key is a mistake.
    static StringTable parse(std::string_view source);

    /// Returns the text of `key`; nullptr if the table has none.
    const std::string* find(std::string_view key) const;

    const std::map<std::string, std::string, std::less<>>& entries() const noexcept { return m_entries; }

private:
    std::map<std::string, std::string, std::less<>> m_entries;
};

}  // namespace zeb
