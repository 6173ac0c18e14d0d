#pragma once

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
    "  1    a conversion failed, or a movie is not right\n"
    "  2    wrong usage\n"
    "  3    an input cannot be read\n"
    "  4    an output cannot be written\n"
    "  130  interrupted\n"
    "With several files all are tried; the exit code is that of the first failure.\n"
    "An interrupt ends the whole program.";

}  // namespace zeb::cli
