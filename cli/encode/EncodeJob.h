#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/SettingOptions.h"
#include "cli/progress/ProgressStyle.h"

namespace zeb::cli {

/// Arguments of `zeb encode`.
struct EncodeArguments : SettingArguments {
    std::vector<std::string> inputs;    ///< at least one
    std::optional<std::string> output;  ///< a file, or the folder for files named after the inputs
    int threads = 0;                    ///< 0 = one per processor core
    bool force = false;                 ///< replace an existing output
    bool estimate = false;              ///< only report the expected size of the movies
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

}  // namespace zeb::cli
