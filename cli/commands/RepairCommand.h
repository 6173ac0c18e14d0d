#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb repair`: makes a finished movie of one whose writing stopped early.
std::function<ExitCode()> declareRepair(CLI::App& parser, Console& console);

}  // namespace zeb::cli
