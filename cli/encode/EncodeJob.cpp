#include "cli/encode/EncodeJob.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "cli/Failure.h"
#include "conversion/plan/OutputName.h"
#include "platform/files/OutputPlace.h"

namespace zeb::cli {
namespace {

namespace fs = std::filesystem;

std::string outputOf(const std::string& input, const EncodeArguments& arguments) {
    const fs::path besideInput = outputBeside(input);
    if (!arguments.output) return besideInput;
    if (!OutputPlace::namesFolder(*arguments.output)) return *arguments.output;
    return fs::path(*arguments.output) / besideInput.filename();
}

// Returns a canonical path for comparison, with links resolved as far as they exist.
fs::path identity(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    const fs::path result = error ? fs::path() : fs::weakly_canonical(whole, error);
    return error ? fs::path(path).lexically_normal() : result;
}

}  // namespace

std::vector<EncodeJob> planJobs(const EncodeArguments& arguments) {
    if (arguments.inputs.size() > 1 && arguments.output && !OutputPlace::namesFolder(*arguments.output)) {
        throw UsageError("--output: \"" + *arguments.output + "\" must be a folder for several inputs");
    }
    std::vector<EncodeJob> jobs;
    std::map<fs::path, std::string> inputOfOutput;
    for (const std::string& input : arguments.inputs) {
        if (input.empty()) throw UsageError("INPUT: a file name is empty");
        const std::string output = outputOf(input, arguments);
        const auto [other, isNew] = inputOfOutput.emplace(identity(output), input);
        if (!isNew)
            throw UsageError("\"" + other->second + "\" and \"" + input + "\" would both become \"" + output +
                             "\"");
        jobs.push_back({input, output});
    }
    for (const EncodeJob& job : jobs) {
        const auto found = inputOfOutput.find(identity(job.input));
        // A job whose output is identical to its input is rejected when it runs.
        if (found != inputOfOutput.end() && found->second != job.input) {
            throw UsageError("the movie of \"" + found->second + "\" would replace the input \"" + job.input +
                             "\"");
        }
    }
    return jobs;
}

}  // namespace zeb::cli
