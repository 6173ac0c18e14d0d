#pragma once

#include <string>
#include <vector>

namespace zeb::cli::manual {

/// What completes a value.
enum class ValueKind { none, other, choice, path, movie };

/// An option, or a value without a name of its own (a positional).
struct ArgumentDescription {
    std::vector<std::string> names;  ///< with their hyphens, short ones first; none for a positional
    std::string placeholder;         ///< empty for a flag
    std::string text;
    std::string expected;  ///< "a whole number from 1 to 65535", if known
    ValueKind kind = ValueKind::none;
    std::vector<std::string> choices;   ///< for `ValueKind::choice`
    std::vector<std::string> excludes;  ///< names of the options that cannot stand beside it
    bool isRequired = false;
    bool isRepeatable = false;  ///< for positionals

    bool takesValue() const { return kind != ValueKind::none; }
};

struct CommandDescription {
    std::string name;
    std::string summary;
    std::vector<ArgumentDescription> options;
    std::vector<ArgumentDescription> positionals;
    std::string notes;  ///< what its help says below the options, without the exit codes
};

/// The program as its tables describe it.
struct ProgramDescription {
    std::string name;
    std::string version;
    std::string summary;
    std::vector<ArgumentDescription> options;
    std::vector<CommandDescription> commands;
};

ProgramDescription describeProgram();

/// `words` with `separator` between them.
std::string joined(const std::vector<std::string>& words, const std::string& separator);

/// `text` with every occurrence of a character of `special` preceded by `mark`.
std::string escaped(const std::string& text, const std::string& special, const std::string& mark);

/// `text` as one word of a POSIX shell, in single quotes.
std::string shellQuoted(const std::string& text);

/// The manual page, for man(7).
std::string manPage(const ProgramDescription& program);

/// Completions for bash; the completion library of the system is not needed.
std::string bashCompletion(const ProgramDescription& program);

/// Completions for zsh, as the function _zeb.
std::string zshCompletion(const ProgramDescription& program);

/// Completions for fish.
std::string fishCompletion(const ProgramDescription& program);

}  // namespace zeb::cli::manual
