#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/progress/ProgressStyle.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb::cli {

/// What was asked of `zeb encode`. Empty options leave the choice to the analysis of the source.
struct EncodeArguments {
    std::vector<std::string> inputs;    ///< at least one
    std::optional<std::string> output;  ///< a file, or the folder for files named after the inputs
    std::optional<std::string> title;
    std::optional<FrameSize> size;
    bool stretch = false;  ///< do not keep the aspect
    std::optional<int> fps;
    int mode = 32;
    bool dither = false;
    int audioChannels = 2;  ///< 0 = no sound
    int track = 1;          ///< the sound track, from 1
    bool loop = false;
    int threads = 0;        ///< 0 = one per processor core
    bool force = false;     ///< replace an existing output
    bool estimate = false;  ///< tell only how large the movies would be
    ProgressStyle progress = ProgressStyle::automatic;
    bool verbose = false;
};

/// One input and the file that it becomes.
struct EncodeJob {
    std::string input;
    std::string output;

    bool operator==(const EncodeJob&) const = default;
};

/// Names the output of every input. Looks at the file system to tell folders from files, changes nothing.
/// Throws `UsageError` when an input has no name, when several inputs would go to one file, or when an output
/// would replace another job's input.
std::vector<EncodeJob> planJobs(const EncodeArguments& arguments);

/// The settings for one input: what was asked for, and for the rest what the window would propose.
Settings settingsFor(const EncodeArguments& arguments, const std::string& input, const SourceInfo& source);

}  // namespace zeb::cli
