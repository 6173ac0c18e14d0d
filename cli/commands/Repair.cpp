#include "cli/commands/Commands.h"

#include <memory>
#include <optional>
#include <string>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/Text.h"
#include "conversion/export/MovieInput.h"
#include "format/ZEBErrors.h"
#include "format/check/MovieFacts.h"
#include "format/check/PartialFile.h"
#include "platform/files/OutputError.h"
#include "platform/files/OutputPlace.h"
#include "platform/files/StagedOutput.h"
#include "platform/text/ErrorText.h"
#include "platform/text/NumberText.h"
#include "platform/text/PathName.h"

namespace zeb::cli {
namespace {

struct RepairArguments {
    std::string file;
    std::optional<std::string> output;
    bool force = false;
};

/// The input has no usable part. The text names the file.
class UnusableInput : public LocalizableError {
public:
    UnusableInput(const std::string& path, const KeyedText& reason)
        : UnusableInput(KeyedText{"error_file_format", {path, reason}}) {}

private:
    explicit UnusableInput(const KeyedText& text) : LocalizableError(englishText(text), text) {}
};

void repairInPlace(PartialFile& movie, const std::string& path) {
    // A complete file need not be writable.
    if (movie.isComplete()) return;
    const auto target = openForUpdating(path);
    movie.finish(*target);
    target->close();
}

void repairInto(PartialFile& movie, const std::string& path, const std::string& output, bool replaces) {
    OutputTerms terms;
    if (replaces) terms.existing = OutputTerms::Existing::replace;
    OutputPlace(output, terms).check(path);
    StagedOutput stage(withoutLastPiece(output), terms);
    const auto target = stage.create(lastPiece(output));
    movie.copyWholeSeconds(*target);
    target->close();
    stage.commit();
}

/// Describes the parts of the input that are missing in the repaired movie.
std::string lossText(const MovieFacts& before) {
    std::string text;
    if (const auto& damage = before.damage) {
        text += "; second " + std::to_string(damage->firstSecond);
        if (damage->seconds > 1)
            text += " and " + countText(damage->seconds - 1, "other damaged second", "other damaged seconds");
        text += " left out";
    }
    if (before.end < before.fileSize)
        text += "; removed " + byteText(before.fileSize - before.end) + " after the last complete second";
    return text;
}

void run(const RepairArguments& arguments, Console& console) {
    const std::string& file = arguments.file;
    MovieInput source(file, isInterrupted);
    PartialFile movie(source);
    const MovieFacts before = movie.facts();
    if (before.wholeSeconds == 0 && !before.isFinished) throw UnusableInput(file, {"error_no_whole_second"});
    if (arguments.output) {
        repairInto(movie, file, *arguments.output, arguments.force);
    } else {
        repairInPlace(movie, file);
    }
    const std::string result = arguments.output.value_or(file);
    const MovieFacts after = readMovieFacts(*openForReading(result));
    console.writeLine(result + ": " + countText(after.wholeFrames, "frame", "frames") + ", " +
                      durationText(static_cast<double>(after.wholeSeconds)) + ", " +
                      byteText(after.fileSize) + lossText(before));
}

ExitCode repair(const RepairArguments& arguments, Console& console) {
    if (!arguments.output && !arguments.force)
        throw UsageError("name the repaired movie with -o, or repair in place with --force");
    try {
        run(arguments, console);
        return ExitCode::done;
    } catch (const UnusableInput& error) {
        console.complain(errorText(error));
        return ExitCode::unreadableInput;
    } catch (const OutputError& error) {
        const bool isInput = error.errorCase() == OutputError::Case::isInput;
        console.complain(isInput ? localizedText("error_repair_into_input_format", {*arguments.output})
                                 : errorText(error));
        return ExitCode::unwritableOutput;
    } catch (const MovieDamageError& error) {
        console.complain(localizedText("error_repair_loses_seconds_format", {arguments.file, error.text()}));
        return ExitCode::conversionFailed;
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        const bool namesOutput = arguments.output && failure.text.starts_with(*arguments.output + ": ");
        console.complain(namesOutput ? failure.text : describeFailureOf(arguments.file).text);
        return failure.exitCode;
    }
}

constexpr Option repairOptions[] = {
    {.names = "FILE",
     .placeholder = " ",
     .help = "A ZEB movie",
     .take = anyText<&RepairArguments::file>,
     .isRequired = true},
    {.names = "-o,--output",
     .placeholder = "FILE",
     .help = "The repaired movie",
     .take = anyText<&RepairArguments::output>},
    {.names = "--force",
     .placeholder = "",
     .help = "Repair in place, or replace a movie that exists",
     .flag = flag<&RepairArguments::force>},
};

constexpr const char* repairNotes =
    "Makes a finished movie of one that a crash, a full disk or an interrupt cut short: it ends\n"
    "after its last complete second. A movie that is finished stays as it is.\n"
    "If complete seconds follow damaged ones, repair in place changes nothing (exit code 1); with -o\n"
    "the new movie contains every complete second, without the damaged ones and their sound.";

}  // namespace

constinit const Command repairCommand =
    command<repair>("repair", "Finish a movie that was cut short", repairOptions, repairNotes);

}  // namespace zeb::cli
