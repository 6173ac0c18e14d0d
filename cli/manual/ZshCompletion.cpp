#include "cli/manual/Manual.h"

namespace zeb::cli::manual {
namespace {

std::string action(const ArgumentDescription& argument) {
    switch (argument.kind) {
        case ValueKind::choice:
            return "(" + joined(argument.choices, " ") + ")";
        case ValueKind::path:
            return "_files";
        case ValueKind::movie:
            return "_files -g \"(#i)*.zeb(-.)\"";
        default:
            return " ";
    }
}

std::string value(const ArgumentDescription& argument) {
    return ":" + escaped(argument.placeholder, ":\\", "\\") + ":" + action(argument);
}

// Returns one specification per name. Each excludes the other names and the incompatible options.
std::string optionSpecifications(const ArgumentDescription& option, const std::string& indent) {
    std::vector<std::string> shutOut = option.names;
    shutOut.insert(shutOut.end(), option.excludes.begin(), option.excludes.end());
    std::string text;
    for (const std::string& name : option.names) {
        std::string specification = "(" + joined(shutOut, " ") + ")" + name;
        if (option.takesValue()) specification += name.starts_with("--") ? "=" : "+";
        specification += "[" + escaped(option.text, "[]:\\", "\\") + "]";
        if (option.takesValue()) specification += value(option);
        text += indent + shellQuoted(specification) + " \\\n";
    }
    return text;
}

std::string optionLines(const std::vector<ArgumentDescription>& options, const std::string& indent) {
    std::string text;
    for (const ArgumentDescription& option : options)
        text += optionSpecifications(option, indent);
    return text;
}

}  // namespace

std::string zshCompletion(const ProgramDescription& program) {
    const std::string function = "_" + program.name;
    std::string text = "#compdef " + program.name + "\n\n" + function +
                       "() {\n"
                       "    local curcontext=\"$curcontext\" state line ret=1\n"
                       "    typeset -A opt_args\n"
                       "    local -a commands\n"
                       "    commands=(\n";
    for (const CommandDescription& command : program.commands)
        text += "        " + shellQuoted(command.name + ":" + command.summary) + "\n";
    text += "    )\n    _arguments -C \\\n" + optionLines(program.options, "        ") +
            "        '1: :->command' \\\n"
            "        '*:: :->arguments' && ret=0\n"
            "    case $state in\n"
            "        command) _describe -t commands command commands && ret=0 ;;\n"
            "        arguments)\n"
            "            curcontext=\"${curcontext%:*}-$line[1]:\"\n"
            "            case $line[1] in\n";
    for (const CommandDescription& command : program.commands) {
        const std::string indent(20, ' ');
        text += "                " + command.name + ")\n" + indent + "_arguments -s -S \\\n" +
                optionLines(command.options, indent + "    ");
        int place = 0;
        for (const ArgumentDescription& positional : command.positionals) {
            ++place;
            const std::string start = positional.isRepeatable ? "*" : std::to_string(place);
            text += indent + "    " + shellQuoted(start + value(positional)) + " \\\n";
        }
        text += indent + "    && ret=0 ;;\n";
    }
    text += "            esac ;;\n    esac\n    return ret\n}\n\n" + function + " \"$@\"\n";
    return text;
}

}  // namespace zeb::cli::manual
