#include "cli/RepairCommand.h"

#include <CLI/App.hpp>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "format/MovieFacts.h"
#include "format/PartialFile.h"
#include "format/ZEBConverterError.h"
#include "format/ZEBFormatError.h"
#include "platform/ErrorText.h"
#include "platform/FileManager.h"
#include "platform/StagedOutput.h"

namespace zeb::cli {
namespace {

struct RepairArguments {
    std::string file;
    std::optional<std::string> output;
    bool force = false;
};

/// There is nothing to make a movie of. The text names the file.
class UnusableInput : public LocalizableError {
public:
    explicit UnusableInput(const LocalizableError& error) : LocalizableError(error) {}
    UnusableInput(const std::string& path, const KeyedText& reason)
        : UnusableInput(KeyedText{"error_file_format", {path, reason}}) {}

private:
    explicit UnusableInput(const KeyedText& text) : LocalizableError(englishText(text), text) {}
};

void copy(ReadableFile& from, WritableFile& to) {
    constexpr std::size_t pieceSize = 1 << 20;
    std::vector<std::uint8_t> piece(pieceSize);
    std::uint64_t position = 0;
    while (const std::size_t count = from.readAt(position, piece)) {
        if (isInterrupted()) throw ZEBConverterError::cancelled();
        to.write(std::span(piece).first(count));
        position += count;
    }
}

void repairInPlace(const std::string& path) {
    finishPartialFile(path);
}

void repairInto(const std::string& path, const std::string& output, bool replaces) {
    if (files::isSameFile(path, output))
        throw OutputRefused::because(output, {"error_output_is_repaired_movie"});
    const auto standing = files::kindOf(output);
    if (standing && !replaces) throw OutputRefused::because(output, {"error_output_exists"});
    if (standing && *standing != files::Kind::regular && *standing != files::Kind::symbolicLink)
        throw OutputRefused::because(output, {"error_not_ordinary_file"});
    const auto source = openForReading(path);
    const std::filesystem::path place(output);
    if (!place.parent_path().empty() && !std::filesystem::is_directory(place.parent_path()))
        throw FileError(output, ENOENT);
    StagedOutput stage(place.parent_path());
    const auto target = stage.create(place.filename());
    copy(*source, *target);
    finishPartialFile(*source, *target);
    target->close();
    stage.commit(replaces ? StagedOutput::Existing::replace : StagedOutput::Existing::keep);
}

void run(const RepairArguments& arguments, Console& console) {
    const std::string& file = arguments.file;
    MovieFacts before;
    try {
        before = readMovieFacts(*openForReading(file));
    } catch (const FileError& error) {
        throw UnusableInput(error);
    } catch (const ZEBFormatError& error) {
        throw UnusableInput(file, error.text());
    }
    if (before.wholeSeconds == 0 && !before.isFinished) throw UnusableInput(file, {"error_no_whole_second"});
    const std::string result = arguments.output.value_or(file);
    if (arguments.output) {
        repairInto(file, result, arguments.force);
    } else {
        repairInPlace(file);
    }
    const MovieFacts after = readMovieFacts(*openForReading(result));
    console.writeLine(
        result + ": " + countText(after.wholeFrames, "frame", "frames") + ", " +
        durationText(static_cast<double>(after.wholeSeconds)) + ", " + byteText(after.fileSize) +
        (after.fileSize < before.fileSize
             ? "; " + byteText(before.fileSize - after.fileSize) + " behind the last whole second cut off"
             : ""));
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
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        console.complain(failure.text);
        return failure.exitCode;
    }
}

}  // namespace

std::function<ExitCode()> declareRepair(CLI::App& parser, Console& console) {
    const auto arguments = std::make_shared<RepairArguments>();
    parser.add_option("FILE", arguments->file, "A ZEB movie")->required()->option_text(" ");
    parser.add_option("-o,--output", arguments->output, "The repaired movie")
        ->type_name("FILE")
        ->option_text("FILE");
    parser.add_flag("--force", arguments->force, "Repair in place, or replace a movie that exists");
    parser.footer(
        std::string(
            "Makes a finished movie of one that a crash, a full disk or an interrupt cut short: it ends\n"
            "after its last whole second. A movie that is finished stays as it is.\n\n") +
        exitCodeHelp);
    return [arguments, &console] { return repair(*arguments, console); };
}

}  // namespace zeb::cli
