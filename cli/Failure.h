#pragma once

#include <stdexcept>
#include <string>

#include "platform/base/Error.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {

/// Exit codes of the program. They are part of the interface for scripts and described in every command's
/// help.
enum class ExitCode {
    done = 0,
    conversionFailed = 1,  ///< neither input nor output is at fault (format limit, memory); invalid movie
    wrongUsage = 2,
    unreadableInput = 3,   ///< missing, not a video or a movie, or nothing can be decoded
    unwritableOutput = 4,  ///< exists already, cannot be created, disk full
    interrupted = 130,
};

/// The table of exit codes at the end of a help text.
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

/// Invalid arguments. `what()` is one line for the user.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An error for the user, in the current language, and for a script.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
};

/// Returns whether `path` is a URL of something that is not a local file ("http://...") and no file has this
/// name.
bool isRemoteAddress(const std::string& path);

/// Returns the error text for the user about `file`. The text names the file even if the error does not.
std::string textNaming(const std::string& file, const std::exception& error);

/// Describes the exception being handled. Must be called in a catch block.
Failure describeCurrentFailure();

/// Like `describeCurrentFailure`, for an error with `file`, which the text names.
Failure describeFailureOf(const std::string& file);

}  // namespace zeb::cli
