#pragma once

#include <functional>
#include <span>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// What an interrupt does to a command.
enum class OnInterrupt {
    end,   ///< it ends the process, as the system has it
    poll,  ///< the command asks `isInterrupted` often and stops in order
};

/// One of the program's commands, as the first argument names it.
struct Command {
    const char* name;
    const char* summary;  ///< one line for the program's help
    /// Declares the command's arguments on its own parser and returns what carries it out once they were
    /// read.
    std::function<ExitCode()> (*declare)(CLI::App& parser, Console& console);
    OnInterrupt onInterrupt = OnInterrupt::poll;
};

/// All commands in the order of the help.
std::span<const Command> commands();

}  // namespace zeb::cli
