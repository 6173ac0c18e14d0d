#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

/// Returns `text` as a valid file name on every system: trimmed, with "_" for each of \ / : ? % * | " < >.
/// Empty if nothing remains.
std::string safeFileName(std::string_view text);

/// Returns the file name proposed by the save panel for a movie with this title made from this input.
std::string proposedOutputName(std::string_view title, const std::string& inputPath);

/// Returns the default movie path: the source's path with the extension "zeb".
std::string outputBeside(const std::string& inputPath);

/// Like `outputBeside`, but appends a number from 2 on to the name while `isTaken` returns true: "film
/// 2.zeb".
std::string freeOutputBeside(const std::string& inputPath,
                             const std::function<bool(const std::string& path)>& isTaken);

/// A file name with a placeholder for a number, written as "%d" or, with leading zeros, "%05d".
class NumberedName {
public:
    /// Returns nothing if `pattern` has no placeholder or more than one.
    static std::optional<NumberedName> parse(const std::string& pattern);

    /// Returns the name with `number`, which must not be negative.
    std::string with(std::int64_t number) const;

private:
    std::string m_before;
    std::string m_after;
    int m_digits = 1;  ///< minimum number of digits
};

/// Returns whether a file can be created in `folder`. Creates and removes an empty file named
/// ".zebmaker-write-test-" and a UUID.
bool writeTest(const std::string& folder);

}  // namespace zeb
