#pragma once

#include <stdexcept>
#include <string>

#include "platform/base/Error.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {

/// How the program ends. Part of the contract with scripts; described in every command's help.
enum class ExitCode {
    done = 0,
    conversionFailed =
        1,  ///< neither the input nor the output is to blame (format limit, memory); a movie is not right
    wrongUsage = 2,
    unreadableInput = 3,   ///< missing, not a video or a movie, or nothing in it can be decoded
    unwritableOutput = 4,  ///< exists already, cannot be created, disk full
    interrupted = 130,
};

/// The table of exit codes for the end of a help text.
inline constexpr const char* exitCodeHelp =
    "Exit codes:\n"
    "  0    done\n"
    "  1    conversion failed, or movie invalid\n"
    "  2    wrong usage\n"
    "  3    an input cannot be read\n"
    "  4    an output cannot be written\n"
    "  130  interrupted\n"
    "With several files all are tried; the exit code is that of the first failure.\n"
    "An interrupt ends the whole program.";

/// Arguments that make no sense. `what()` is one line for the person who typed them.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a person, in the language in use, and a script are told about an error.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
};

/// Whether `path` is the address of something that is no file of this computer ("http://..."), and no file
/// has it as its name.
bool isRemoteAddress(const std::string& path);

/// Returns what a person reads about an error of `file`: the text names it, whether the error does or not.
std::string textNaming(const std::string& file, const std::exception& error);

/// Describes the exception that is being handled. To be called in a catch block only.
Failure describeCurrentFailure();

/// The same for an error met with `file`, which the text names.
Failure describeFailureOf(const std::string& file);

}  // namespace zeb::cli
