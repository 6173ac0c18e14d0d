#include "cli/commands/Commands.h"

#include <memory>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/Json.h"
#include "cli/Text.h"
#include "conversion/export/MovieInput.h"
#include "format/check/MovieCheck.h"
#include "platform/text/NumberText.h"

namespace zeb::cli {
namespace {

struct VerifyArguments {
    std::vector<std::string> files;
    bool json = false;
};

std::string verdictText(const std::string& file, const MovieCheck& check) {
    std::string line = printable(file) + ": ";
    if (check.fault) {
        line += "error at byte " + std::to_string(check.fault->offset) + ": " + printable(check.fault->text);
    } else {
        line += "valid, " + countText(check.seconds * check.header.fps, "frame", "frames") + ", " +
                durationText(static_cast<double>(check.seconds));
    }
    return line + "\n";
}

std::string verdictJson(const std::string& file, const MovieCheck& check) {
    JsonFields fields{{"file", file}, {"right", !check.fault.has_value()}, {"seconds", check.seconds}};
    if (check.fault) {
        fields.push_back({"offset", check.fault->offset});
        fields.push_back({"fault", check.fault->text});
    }
    return jsonLine(fields);
}

ExitCode verify(const VerifyArguments& arguments, Console& console) {
    ExitCode result = ExitCode::done;
    for (const std::string& file : arguments.files) {
        ExitCode code = ExitCode::done;
        try {
            const MovieCheck check =
                checkMovie([&file] { return std::make_unique<MovieInput>(file, isInterrupted); }, {});
            console.write(arguments.json ? verdictJson(file, check) : verdictText(file, check));
            if (check.fault) code = ExitCode::conversionFailed;
        } catch (...) {
            const Failure failure = describeFailureOf(file);
            console.complain(failure.text);
            code = failure.exitCode;
            if (code == ExitCode::interrupted) return code;
        }
        if (result == ExitCode::done) result = code;
        // Stop if standard output failed (closed pipe or full disk).
        if (!console.outIsGood()) return ExitCode::unwritableOutput;
    }
    return result;
}

constexpr Option verifyOptions[] = {
    {.names = "FILE",
     .placeholder = "...",
     .help = "ZEB movies",
     .take = append<&VerifyArguments::files>,
     .isRequired = true,
     .isRepeatable = true},
    {.names = "--json",
     .placeholder = "",
     .help = "One JSON object per line instead of text",
     .flag = flag<&VerifyArguments::json>},
};

constexpr const char* verifyNotes =
    "Checks header, index, blocks, sound and the decoding of every frame. The line of a movie\n"
    "states the first error and its byte; the exit code is then 1.";

}  // namespace

constinit const Command verifyCommand = command<verify>(
    "verify", "Check ZEB movies against every rule of the format", verifyOptions, verifyNotes);

}  // namespace zeb::cli
