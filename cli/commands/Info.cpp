#include "cli/commands/Commands.h"

#include <memory>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/commands/InfoText.h"
#include "conversion/export/MovieInput.h"
#include "format/check/MovieFacts.h"

namespace zeb::cli {
namespace {

struct InfoArguments {
    std::vector<std::string> files;
    bool json = false;
};

ExitCode info(const InfoArguments& arguments, Console& console) {
    ExitCode result = ExitCode::done;
    const char* separator = "";
    for (const std::string& file : arguments.files) {
        try {
            MovieInput input(file, isInterrupted);
            const MovieFacts facts = readMovieFacts(input);
            console.write(arguments.json ? infoJson(file, facts) : separator + infoText(file, facts));
            separator = "\n";
        } catch (...) {
            const Failure failure = describeFailureOf(file);
            console.complain(failure.text);
            if (failure.exitCode == ExitCode::interrupted) return failure.exitCode;
            if (result == ExitCode::done) result = failure.exitCode;
        }
        // Stop if standard output failed (closed pipe, as in `zeb info *.zeb | head`, or full disk).
        if (!console.outIsGood()) return ExitCode::unwritableOutput;
    }
    return result;
}

constexpr Option infoOptions[] = {
    {.names = "FILE",
     .placeholder = "...",
     .help = "ZEB movies",
     .take = append<&InfoArguments::files>,
     .isRequired = true,
     .isRepeatable = true},
    {.names = "--json",
     .placeholder = "",
     .help = "One JSON object per line instead of text",
     .flag = flag<&InfoArguments::json>},
};

}  // namespace

constinit const Command infoCommand = command<info>("info", "Show what ZEB movies contain", infoOptions, "");

}  // namespace zeb::cli
