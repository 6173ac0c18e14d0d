#pragma once

#include <string>
#include <vector>

namespace zeb::cli::manual {

/// The kind of completion for a value.
enum class ValueKind { none, other, choice, path, movie };

/// An option, or a positional value.
struct ArgumentDescription {
    std::vector<std::string> names;  ///< with hyphens, short ones first; empty for a positional
    std::string placeholder;         ///< empty for a flag
    std::string text;
    std::string expected;  ///< "a whole number from 1 to 65535", if known
    ValueKind kind = ValueKind::none;
    std::vector<std::string> choices;   ///< for `ValueKind::choice`
    std::vector<std::string> excludes;  ///< names of the options that cannot be combined with it
    bool isRequired = false;
    bool isRepeatable = false;  ///< for positionals

    bool takesValue() const { return kind != ValueKind::none; }
};

struct CommandDescription {
    std::string name;
    std::string summary;
    std::vector<ArgumentDescription> options;
    std::vector<ArgumentDescription> positionals;
    std::string notes;  ///< the text below the options in its help, without the exit codes
};

/// The program as described by its tables.
struct ProgramDescription {
    std::string name;
    std::string version;
    std::string summary;
    std::vector<ArgumentDescription> options;
    std::vector<CommandDescription> commands;
};

ProgramDescription describeProgram();

/// Joins `words` with `separator`.
std::string joined(const std::vector<std::string>& words, const std::string& separator);

/// Puts `mark` before every character of `text` that is contained in `special`.
std::string escaped(const std::string& text, const std::string& special, const std::string& mark);

/// Returns `text` as one word of a POSIX shell, in single quotes.
std::string shellQuoted(const std::string& text);

/// Returns the manual page for man(7).
std::string manPage(const ProgramDescription& program);

/// Returns completions for bash that do not need the bash-completion library.
std::string bashCompletion(const ProgramDescription& program);

/// Returns completions for zsh, as the function _zeb.
std::string zshCompletion(const ProgramDescription& program);

/// Returns completions for fish.
std::string fishCompletion(const ProgramDescription& program);

}  // namespace zeb::cli::manual
