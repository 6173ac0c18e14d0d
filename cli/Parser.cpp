#include "cli/Parser.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "cli/Command.h"
#include "cli/Interruption.h"

namespace zeb::cli {

std::unique_ptr<CLI::App> makeParser(Console& console, std::function<ExitCode()>& run) {
    auto program = std::make_unique<CLI::App>(
        "Turns video files into ZEB movies for the Sinclair QL family and SMSQ/E.", "zeb");
    program->set_version_flag("--version", "zeb " ZEB_VERSION, "Print the version and exit");
    program->set_help_flag("-h,--help", "Print this help and exit");
    program->footer(exitCodeHelp);
    program->require_subcommand(1);
    // A later option overrides an earlier one, so that an alias can carry defaults.
    program->option_defaults()->take_last();
    program->get_formatter()->column_width(28);
    for (const Command& command : commands()) {
        CLI::App* parser = program->add_subcommand(command.name, command.summary);
        const auto action = command.declare(*parser, console);
        const auto polling = [action] {
            stopOnSignals();
            return action();
        };
        parser->callback([&run, chosen = command.onInterrupt == OnInterrupt::poll
                                             ? std::function<ExitCode()>(polling)
                                             : action] { run = chosen; });
    }
    return program;
}

}  // namespace zeb::cli
