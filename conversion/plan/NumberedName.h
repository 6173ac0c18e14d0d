#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zeb {

/// A file name with a place for a number, written as "%d" or, with leading zeros, "%05d".
class NumberedName {
public:
    /// Nothing when `pattern` has no such place, or more than one.
    static std::optional<NumberedName> parse(const std::string& pattern);

    /// The name with `number`, which is not negative.
    std::string with(std::int64_t number) const;

private:
    std::string m_before;
    std::string m_after;
    int m_digits = 1;  ///< at least
};

}  // namespace zeb
