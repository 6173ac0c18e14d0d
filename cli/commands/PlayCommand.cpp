#include "cli/commands/PlayCommand.h"

#include <unistd.h>

#include <CLI/App.hpp>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "cli/Failure.h"
#include "format/ZEBFormatError.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/SystemErrorText.h"

namespace zeb::cli {
namespace {

constexpr const char* applicationName = "zebmaker";

/// Where the application is: installed beside this program, or in the neighbouring room of a build; else to
/// be looked up in PATH.
std::string applicationPath() {
    std::error_code error;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& place : {here / applicationName, here.parent_path() / "app" / applicationName}) {
        if (!error && access(place.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(place, error))
            return place.string();
    }
    return applicationName;
}

ExitCode play(const std::vector<std::string>& files, Console& console) {
    for (const std::string& file : files) {
        try {
            if (!isMovie(*openForReading(file))) {
                console.complain(textNaming(file, ZEBFormatError::notAMovie()));
                return ExitCode::unreadableInput;
            }
        } catch (const std::exception& error) {
            console.complain(textNaming(file, error));
            return ExitCode::unreadableInput;
        }
    }
    // Full paths are no options, whatever they begin with.
    std::vector<std::string> words = {applicationPath()};
    for (const std::string& file : files)
        words.push_back(std::filesystem::absolute(file).string());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    console.complain("the application \"" + std::string(applicationName) +
                     "\" cannot be started: " + localizedText(systemErrorText(errno)) +
                     "; it is installed beside this program or found in PATH");
    return ExitCode::conversionFailed;
}

}  // namespace

std::function<ExitCode()> declarePlay(CLI::App& parser, Console& console) {
    auto files = std::make_shared<std::vector<std::string>>();
    parser.add_option("FILE", *files, "Movies to play, each in a window of its own")
        ->required()
        ->option_text("...")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    parser.footer(exitCodeHelp);
    return [files, &console] { return play(*files, console); };
}

}  // namespace zeb::cli
