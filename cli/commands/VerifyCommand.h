#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb verify`: checks movies against every rule of the format, one line for each.
std::function<ExitCode()> declareVerify(CLI::App& parser, Console& console);

}  // namespace zeb::cli
