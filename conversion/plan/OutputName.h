#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

/// `text` such that it can be a file's name on every system: trimmed, with "_" for each of \ / : ? % * | " <
/// >. Empty when nothing is left.
std::string safeFileName(std::string_view text);

/// The file name that a save panel proposes for a movie with this title, made from this input.
std::string proposedOutputName(std::string_view title, const std::string& inputPath);

/// The place of a movie next to its source: the source's path with the extension "zeb".
std::string outputBeside(const std::string& inputPath);

/// The same, with a number from 2 on behind the name where `isTaken` says that a place is in use:
/// "film 2.zeb".
std::string freeOutputBeside(const std::string& inputPath,
                             const std::function<bool(const std::string& path)>& isTaken);

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

/// Whether a file can be made in `folder`: makes an empty one, called ".zebmaker-write-test-" and a UUID, and
/// removes it again.
bool writeTest(const std::string& folder);

}  // namespace zeb
