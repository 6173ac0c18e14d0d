#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/progress/ProgressStyle.h"
#include "codec/Mode32Interpretation.h"

namespace CLI {
class App;
}

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

/// Declares the arguments on `parser`, which fills `arguments` (they must live as long as it). Values out of
/// range make it throw its own parse error with one clear line.
void declareExportArguments(CLI::App& parser, ExportArguments& arguments);

/// A time as people write it, in microseconds: seconds ("90", "2.5"), "M:SS" or "H:MM:SS", the seconds with
/// up to six decimals. Nothing for another text.
std::optional<std::int64_t> timeFrom(std::string_view text);

}  // namespace zeb::cli
