#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/progress/ProgressStyle.h"
#include "codec/Mode32Interpretation.h"
#include "conversion/export/ExportRun.h"

namespace zeb::cli {

enum class ExportFormat { png, wav, gif, mp4, mkv, webm };

/// What was asked of `zeb export`. Times are in microseconds.
struct ExportArguments {
    std::string input;
    std::string output;
    std::optional<ExportFormat> format;  ///< nothing: by the output's ending
    std::optional<int> frame;
    std::optional<std::int64_t> at;
    std::optional<std::int64_t> from;
    std::optional<std::int64_t> to;
    std::optional<int> scale;
    std::optional<Mode32Interpretation> interpretation;
    bool force = false;
    ProgressStyle progress = ProgressStyle::automatic;
    bool verbose = false;
};

/// One export as it was asked for: what is made of which file, and where.
struct ExportJob {
    std::string input;
    std::string output;  ///< a file, or the pattern for the names of many
    ExportSettings settings;
};

/// Chooses format and output. Looks at the file system to tell folders from files, changes nothing. Throws
/// `UsageError`.
ExportJob planExport(const ExportArguments& arguments);

/// A time as people write it, in microseconds: seconds ("90", "2.5"), "M:SS" or "H:MM:SS", the seconds with
/// up to six decimals. Nothing for another text.
std::optional<std::int64_t> timeFrom(std::string_view text);

}  // namespace zeb::cli
