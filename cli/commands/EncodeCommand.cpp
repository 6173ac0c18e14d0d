#include "cli/commands/EncodeCommand.h"

#include <CLI/App.hpp>
#include <memory>

#include "cli/encode/EncodeArguments.h"
#include "cli/encode/EncodeJob.h"
#include "cli/encode/Encoding.h"
#include "cli/progress/ProgressReporter.h"
#include "media/reading/FFmpegMediaLibrary.h"

namespace zeb::cli {
namespace {

ExitCode encode(const EncodeArguments& arguments, Console& console) {
    const std::vector<EncodeJob> jobs = planJobs(arguments);
    if (arguments.dither && arguments.mode != 4) {
        console.complain("--dither has no effect in Mode 32", Colour::yellow);
    }
    const auto library =
        makeFFmpegMediaLibrary(arguments.verbose ? MediaLogging::verbose : MediaLogging::silent);
    const auto reporter = makeProgressReporter(arguments.progress, console,
                                               arguments.verbose ? Verbosity::verbose : Verbosity::quiet);
    ExitCode result = ExitCode::done;
    for (const EncodeJob& job : jobs) {
        if (result == ExitCode::interrupted) {
            reporter->began(job);
            reporter->failed({"not begun because of the interrupt", result, 0});
            continue;
        }
        Encoding encoding(arguments, job, *library, *reporter);
        const ExitCode code = arguments.estimate ? encoding.estimate() : encoding.run();
        if (result == ExitCode::done || code == ExitCode::interrupted) result = code;
        // A forecast that cannot be shown is lost; a movie is there whoever reads about it.
        if (arguments.estimate && !console.outIsGood()) return ExitCode::unwritableOutput;
    }
    return result;
}

}  // namespace

std::function<ExitCode()> declareEncode(CLI::App& parser, Console& console) {
    const auto arguments = std::make_shared<EncodeArguments>();
    declareEncodeArguments(parser, *arguments);
    parser.footer(
        std::string(
            "The result goes to standard output, as does the progress; warnings, errors and the log go to\n"
            "standard error. An interrupt (Ctrl-C) finishes the movie at its last whole second; a second\n"
            "one ends the program at once.\n\n"
            "The movie's sides are multiples of 8, at least 64 and no larger than the source's. Of surround\n"
            "sound the first two channels are taken.\n\n"
            "A conversion that will pass the format's 4 GiB or the free space is warned of and goes on as "
            "far\n"
            "as it can. --estimate ends with the code that it would end with: 1 beyond 4 GiB, 4 without the\n"
            "space.\n\n") +
        exitCodeHelp);
    return [arguments, &console] { return encode(*arguments, console); };
}

}  // namespace zeb::cli
