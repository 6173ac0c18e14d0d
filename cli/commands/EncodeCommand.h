#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb encode`: converts videos into movies, one after the other. What carries it out throws `UsageError`
/// before anything was done; the failure of one input is reported and the next one taken up.
std::function<ExitCode()> declareEncode(CLI::App& parser, Console& console);

}  // namespace zeb::cli
