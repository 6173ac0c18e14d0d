#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/progress/ProgressStyle.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb::cli {

/// Arguments of `zeb encode`. The analysis of the source determines empty options.
struct EncodeArguments {
    std::vector<std::string> inputs;    ///< at least one
    std::optional<std::string> output;  ///< a file, or the folder for files named after the inputs
    std::optional<std::string> title;
    std::optional<FrameSize> size;
    bool stretch = false;  ///< do not keep the aspect ratio
    std::optional<int> fps;
    int mode = 32;
    bool dither = false;
    int audioChannels = 2;  ///< 0 = no sound
    int track = 1;          ///< the sound track, from 1
    bool loop = false;
    int threads = 0;        ///< 0 = one per processor core
    bool force = false;     ///< replace an existing output
    bool estimate = false;  ///< only report the expected size of the movies
    ProgressStyle progress = ProgressStyle::automatic;
    bool verbose = false;
};

/// One input and its output file.
struct EncodeJob {
    std::string input;
    std::string output;

    bool operator==(const EncodeJob&) const = default;
};

/// Determines the output of every input. Reads the file system to distinguish folders from files; changes
/// nothing. Throws `UsageError` if an input has no name, if several inputs have the same output, or if an
/// output would replace another job's input.
std::vector<EncodeJob> planJobs(const EncodeArguments& arguments);

/// Returns the settings for one input: the given arguments, and otherwise the window's proposals.
Settings settingsFor(const EncodeArguments& arguments, const std::string& input, const SourceInfo& source);

}  // namespace zeb::cli
