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

/// Arguments of `zeb export`. Times are in microseconds.
struct ExportArguments {
    std::string input;
    std::string output;
    std::optional<ExportFormat> format;  ///< empty: by the extension of the output
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

/// A planned export: its input, output and settings.
struct ExportJob {
    std::string input;
    std::string output;  ///< a file, or the name pattern of many files
    ExportSettings settings;
};

/// Determines format and output. Reads the file system to distinguish folders from files; changes nothing.
/// Throws `UsageError`.
ExportJob planExport(const ExportArguments& arguments);

}  // namespace zeb::cli
