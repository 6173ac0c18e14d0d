#include "cli/commands/Commands.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "cli/Failure.h"
#include "format/ZEBErrors.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/SystemErrorText.h"

namespace zeb::cli {
namespace {

constexpr const char* applicationName = "zebmaker";

/// Returns the path of the application: installed beside this program or in the sibling folder of a build,
/// otherwise the name, to be searched in PATH.
std::string applicationPath() {
    std::error_code error;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& place : {here / applicationName, here.parent_path() / "app" / applicationName}) {
        if (!error && access(place.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(place, error))
            return place.string();
    }
    return applicationName;
}

struct PlayArguments {
    std::vector<std::string> files;
};

ExitCode play(const PlayArguments& arguments, Console& console) {
    for (const std::string& file : arguments.files) {
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
    // Absolute paths cannot be mistaken for options.
    std::vector<std::string> words = {applicationPath()};
    for (const std::string& file : arguments.files)
        words.push_back(std::filesystem::absolute(file).string());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execvp(pointers.front(), pointers.data());
    console.complain("the application \"" + std::string(applicationName) +
                     "\" cannot be started: " + localizedText(systemErrorText(errno)) +
                     "; it is installed beside this program or found in PATH");
    return ExitCode::conversionFailed;
}

constexpr Option playOptions[] = {
    {.names = "FILE",
     .placeholder = "...",
     .help = "Movies to play, each in a separate window",
     .take = append<&PlayArguments::files>,
     .isRequired = true,
     .isRepeatable = true},
};

}  // namespace

constinit const Command playCommand =
    command<play>("play", "Play ZEB movies in the application", playOptions, "", OnInterrupt::end);

}  // namespace zeb::cli
