#pragma once

#include <functional>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// `zeb thumbnail`: a small picture of a movie, as file managers ask for one.
std::function<ExitCode()> declareThumbnail(CLI::App& parser, Console& console);

}  // namespace zeb::cli
