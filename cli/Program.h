#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"

namespace zeb::cli {

/// Runs the program with the arguments after its name. Every error is reported as one line on `console`.
ExitCode runProgram(const std::vector<std::string>& arguments, Console& console) noexcept;

/// Reads the words after a command's name into `arguments`, created by its `makeArguments`. Throws
/// `UsageError`.
void readArguments(const Command& command, const std::vector<std::string>& words, void* arguments);

}  // namespace zeb::cli
