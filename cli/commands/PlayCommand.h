#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb play`: becomes the application, with movies to play.
std::function<ExitCode()> declarePlay(CLI::App& parser, Console& console);

}  // namespace zeb::cli
