#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb info`: shows what movies contain. A file that cannot be read as a movie is reported and the next one
/// taken up.
std::function<ExitCode()> declareInfo(CLI::App& parser, Console& console);

}  // namespace zeb::cli
