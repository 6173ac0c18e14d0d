#include "cli/manual/Manual.h"

namespace zeb::cli::manual {
namespace {

std::string quoted(const std::string& text) {
    return "'" + escaped(text, "\\'", "\\") + "'";
}

std::string valueFlags(const ArgumentDescription& argument) {
    switch (argument.kind) {
        case ValueKind::none:
            return "";
        case ValueKind::other:
            return " -x";
        case ValueKind::choice:
            return " -x -a " + quoted(joined(argument.choices, " "));
        case ValueKind::path:
            return " -r -F";
        case ValueKind::movie:
            return " -x -k -a '(__fish_complete_suffix .zeb)'";
    }
    return "";
}

std::string optionLine(const std::string& start, const ArgumentDescription& option) {
    std::string line = start;
    for (const std::string& name : option.names)
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return line + valueFlags(option) + " -d " + quoted(option.text) + "\n";
}

}  // namespace

std::string fishCompletion(const ProgramDescription& program) {
    const std::string complete = "complete -c " + program.name;
    const std::string atStart = complete + " -n __fish_use_subcommand";
    std::string text = "# fish completion for " + program.name + "\n\n" + complete + " -f\n";
    for (const ArgumentDescription& option : program.options)
        text += optionLine(atStart, option);
    for (const CommandDescription& command : program.commands)
        text += atStart + " -a " + command.name + " -d " + quoted(command.summary) + "\n";
    for (const CommandDescription& command : program.commands) {
        const std::string inside = complete + " -n '__fish_seen_subcommand_from " + command.name + "'";
        text += "\n";
        for (const ArgumentDescription& option : command.options)
            text += optionLine(inside, option);
        for (const ArgumentDescription& positional : command.positionals) {
            // "Required argument" refers to an option in fish; these lines only offer file names.
            text += inside + (positional.kind == ValueKind::movie ? " -k -a '(__fish_complete_suffix .zeb)'\n"
                                                                  : " -F\n");
        }
    }
    return text;
}

}  // namespace zeb::cli::manual
