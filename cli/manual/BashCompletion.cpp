#include "cli/manual/Manual.h"

namespace zeb::cli::manual {
namespace {

// Parses the words before the cursor like the program, so that a value similar to an option or a command is
// not mistaken for one. "--mode=32" arrives as three words.
constexpr const char* functions = R"bash(
# The file names that begin with $cur; with an argument only those with this ending, and folders.
_zeb_files() {
    local name path
    compopt -o filenames 2>/dev/null
    while IFS= read -r name; do
        path=${name/#'~/'/"$HOME/"}
        if [[ -z $1 || ${name,,} == *"$1" || -d $path ]]; then COMPREPLY+=("$name"); fi
    done < <(compgen -f -- "$cur")
}

_zeb_words() {
    local word
    while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -W "$1" -- "$cur")
}

_zeb() {
    local cur=${COMP_WORDS[COMP_CWORD]} command='' option='' namesOnly='' word i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ -n $option && $word == '=' ]]; then continue; fi
        if [[ -n $option ]]; then option=''
        elif [[ -n $namesOnly ]]; then continue
        elif [[ $word == -- ]]; then namesOnly=1
        elif [[ $word == -* ]]; then
            if _zeb_takes_value "$command" "$word"; then option=$word; fi
        elif [[ -z $command ]]; then command=$word
        fi
    done
    if [[ -n $option ]]; then
        if [[ $cur == '=' ]]; then cur=''; fi
        _zeb_value "$command" "$option"
    elif [[ -z $command ]]; then _zeb_words "$(_zeb_commands) $(_zeb_options '')"
    elif [[ $cur == -* && -z $namesOnly ]]; then _zeb_words "$(_zeb_options "$command")"
    else _zeb_name "$command"
    fi
}

complete -F _zeb zeb
)bash";

std::string offer(const ArgumentDescription& argument) {
    switch (argument.kind) {
        case ValueKind::choice:
            return "_zeb_words " + shellQuoted(joined(argument.choices, " "));
        case ValueKind::path:
            return "_zeb_files ''";
        case ValueKind::movie:
            return "_zeb_files .zeb";
        default:
            return ":";
    }
}

std::string options(const std::string& command, const std::vector<ArgumentDescription>& arguments) {
    std::vector<std::string> names;
    for (const ArgumentDescription& option : arguments)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return "        " + shellQuoted(command) + ") echo " + shellQuoted(joined(names, " ")) + " ;;\n";
}

// Returns "'encode -o' | 'encode --output'", a pattern for command and option.
std::string pattern(const std::string& command, const ArgumentDescription& option) {
    std::vector<std::string> pairs;
    for (const std::string& name : option.names)
        pairs.push_back(shellQuoted(command + " " + name));
    return joined(pairs, " | ");
}

}  // namespace

std::string bashCompletion(const ProgramDescription& program) {
    std::vector<std::string> names;
    std::string known = options("", program.options);
    std::string valued;
    std::string values;
    std::string positionals;
    for (const CommandDescription& command : program.commands) {
        names.push_back(command.name);
        known += options(command.name, command.options);
        for (const ArgumentDescription& option : command.options) {
            if (!option.takesValue()) continue;
            valued += "        " + pattern(command.name, option) + ") return 0 ;;\n";
            values += "        " + pattern(command.name, option) + ") " + offer(option) + " ;;\n";
        }
        if (!command.positionals.empty())
            positionals += "        " + command.name + ") " + offer(command.positionals.back()) + " ;;\n";
    }
    return "# bash completion for " + program.name + "\n\n_zeb_commands() {\n    echo " +
           shellQuoted(joined(names, " ")) + "\n}\n\n_zeb_options() {\n    case $1 in\n" + known +
           "    esac\n}\n\n_zeb_takes_value() {\n    case \"$1 $2\" in\n" + valued +
           "    esac\n    return 1\n}\n\n_zeb_value() {\n    case \"$1 $2\" in\n" + values +
           "    esac\n}\n\n_zeb_name() {\n    case $1 in\n" + positionals + "    esac\n}\n" + functions;
}

}  // namespace zeb::cli::manual
