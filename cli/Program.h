#pragma once

#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace zeb::cli {

/// Runs the program with the arguments after its name. Every error ends here as one line on `console`.
ExitCode runProgram(const std::vector<std::string>& arguments, Console& console) noexcept;

}  // namespace zeb::cli
