#include "cli/InfoCommand.h"

#include <CLI/App.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/InfoText.h"
#include "cli/Interruption.h"
#include "format/MovieFacts.h"
#include "platform/FileHandle.h"

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
        if (isInterrupted()) return ExitCode::interrupted;
        try {
            const MovieFacts facts = readMovieFacts(*openForReading(file));
            console.write(arguments.json ? infoJson(file, facts) : separator + infoText(file, facts));
            separator = "\n";
        } catch (const std::exception& error) {
            console.complain(textNaming(file, error));
            result = ExitCode::unreadableInput;
        }
        // Nobody reads on: `zeb info *.zeb | head`, or the disk is full.
        if (!console.outIsGood()) return ExitCode::unwritableOutput;
    }
    return result;
}

}  // namespace

std::function<ExitCode()> declareInfo(CLI::App& parser, Console& console) {
    const auto arguments = std::make_shared<InfoArguments>();
    parser.add_option("FILE", arguments->files, "ZEB movies")
        ->required()
        ->option_text("...")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    parser.add_flag("--json", arguments->json, "One JSON object per line instead of text");
    parser.footer(exitCodeHelp);
    return [arguments, &console] { return info(*arguments, console); };
}

}  // namespace zeb::cli
