#pragma once

#include <functional>
#include <memory>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// The parser of the whole program with all its commands. Parsing puts what carries out the chosen command
/// into `run`. Both references must live as long as the parser.
std::unique_ptr<CLI::App> makeParser(Console& console, std::function<ExitCode()>& run);

}  // namespace zeb::cli
