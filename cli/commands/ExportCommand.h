#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb export`: turns a movie into ordinary pictures, sound or film. What carries it out throws `UsageError`
/// before anything was done; a failure is reported.
std::function<ExitCode()> declareExport(CLI::App& parser, Console& console);

}  // namespace zeb::cli
