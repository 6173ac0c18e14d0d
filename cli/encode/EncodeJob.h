#pragma once

#include <string>
#include <vector>

#include "cli/encode/EncodeArguments.h"

namespace zeb::cli {

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

}  // namespace zeb::cli
