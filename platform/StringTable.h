#pragma once

#include <map>
#include <string>
#include <string_view>

namespace zeb {

/// Localised texts by key.
class StringTable {
public:
    /// Reads the text form of a table: entries `"key" = "text";` with the escapes \" \\ and \n, comments from
    /// `//` to the end of the line, UTF-8. Throws `std::invalid_argument` naming the line of the first
    /// mistake, which a key that occurs twice is as well.
    static StringTable parse(std::string_view source);

    /// The text of `key`; nullptr when the table has none.
    const std::string* find(std::string_view key) const;

    const std::map<std::string, std::string, std::less<>>& entries() const noexcept { return m_entries; }

private:
    std::map<std::string, std::string, std::less<>> m_entries;
};

}  // namespace zeb
