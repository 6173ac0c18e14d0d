#pragma once

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Text.h"
#include "cli/progress/ProgressStyle.h"

/// The commands as tables. Parser, help, errors, manual and completions read the same rows.
namespace zeb::cli {

/// An option, or a value without a name (a positional).
struct Option {
    const char* names;  ///< "-o,--output"; of a positional its label, without hyphens
    const char*
        placeholder;  ///< of the value in the help; empty for a switch; "..." for a repeatable positional
    const char* help;
    const char* expected = "";  ///< "one of 32, 4", for errors and completions; empty when any text will do
    /// Stores a value in the command's arguments; false if it is not what is expected. Null for a switch.
    bool (*take)(void* arguments, const std::string& text) = nullptr;
    bool& (*flag)(void* arguments) = nullptr;  ///< the field of a switch
    const char* excludes = "";  ///< names of options above that cannot stand beside it: "--frame,--at"
    bool isRequired = false;
    bool isRepeatable = false;

    bool isPositional() const { return names[0] != '-'; }
    bool takesValue() const { return take != nullptr; }
};

/// What an interrupt does to a command.
enum class OnInterrupt {
    end,   ///< it ends the process, as the system has it
    poll,  ///< the command asks `isInterrupted` often and stops in order
};

struct Command {
    const char* name;     ///< as the first argument
    const char* summary;  ///< one line for the program's help
    std::span<const Option> options;
    const char* notes;  ///< below the options in its help
    std::shared_ptr<void> (*makeArguments)();
    /// Runs the command with the arguments that its options have filled. Throws `UsageError` before anything
    /// is done.
    ExitCode (*run)(const void* arguments, Console& console);
    OnInterrupt onInterrupt = OnInterrupt::poll;
};

/// Options of every command, and of the program itself.
inline constexpr Option helpOption{"-h,--help", "", "Print this help and exit"};
inline constexpr Option versionOption{"--version", "", "Print the version and exit"};

inline constexpr const char* programName = "zeb";
inline constexpr const char* programSummary =
    "Turns video files into ZEB movies for the Sinclair QL family and SMSQ/E.";

/// Splits a list as it stands in a row: "-o,--output" with "," or "32, 4" with ", ".
std::vector<std::string> splitList(std::string_view list, std::string_view separator);

// MARK: What rows are made of

/// A word that stands for a value.
template <typename Value>
struct Choice {
    const char* name;
    Value value;
};

template <typename Arguments, typename Field>
Arguments ownerOf(Field Arguments::*);
template <auto field>
auto& fieldOf(void* arguments) {
    return static_cast<decltype(ownerOf(field))*>(arguments)->*field;
}

/// The field of a switch.
template <auto field>
bool& flag(void* arguments) {
    return fieldOf<field>(arguments);
}

/// Takes any text.
template <auto field>
bool anyText(void* arguments, const std::string& text) {
    fieldOf<field>(arguments) = text;
    return true;
}

/// Adds any text to a list.
template <auto field>
bool append(void* arguments, const std::string& text) {
    fieldOf<field>(arguments).push_back(text);
    return true;
}

/// Takes what `read` makes of the text: a function that returns an optional value.
template <auto field, auto read>
bool parsed(void* arguments, const std::string& text) {
    const auto value = read(text);
    if (value) fieldOf<field>(arguments) = *value;
    return value.has_value();
}

/// Takes a text that is not empty.
template <auto field>
bool fileName(void* arguments, const std::string& text) {
    if (!text.empty()) fieldOf<field>(arguments) = text;
    return !text.empty();
}

/// Takes a whole number from `lowest` to `highest`.
template <auto field, int lowest, int highest>
bool number(void* arguments, const std::string& text) {
    const std::optional<int> value = wholeNumber(text, lowest, highest);
    if (value) fieldOf<field>(arguments) = *value;
    return value.has_value();
}

/// Takes one of the words of an array of `Choice`.
template <auto field, const auto& choices>
bool choice(void* arguments, const std::string& text) {
    for (const auto& each : choices) {
        if (text != each.name) continue;
        fieldOf<field>(arguments) = each.value;
        return true;
    }
    return false;
}

template <typename Arguments>
Arguments argumentsOf(ExitCode (*)(const Arguments&, Console&));

/// The command that `action` carries out: ExitCode action(const Arguments&, Console&).
template <auto action>
constexpr Command command(const char* name, const char* summary, std::span<const Option> options,
                          const char* notes, OnInterrupt onInterrupt = OnInterrupt::poll) {
    using Arguments = decltype(argumentsOf(action));
    return {name,
            summary,
            options,
            notes,
            []() -> std::shared_ptr<void> { return std::make_shared<Arguments>(); },
            [](const void* arguments, Console& console) {
                return action(*static_cast<const Arguments*>(arguments), console);
            },
            onInterrupt};
}

inline constexpr std::array progressStyles = {
    Choice<ProgressStyle>{"auto", ProgressStyle::automatic},
    Choice<ProgressStyle>{"bar", ProgressStyle::bar},
    Choice<ProgressStyle>{"plain", ProgressStyle::plain},
    Choice<ProgressStyle>{"json", ProgressStyle::json},
    Choice<ProgressStyle>{"none", ProgressStyle::none},
};

/// --progress and --verbose, as all commands that take their time have them.
template <auto field>
inline constexpr Option progressOption{
    .names = "--progress",
    .placeholder = "STYLE",
    .help = "auto, bar, plain, json or none [auto: bar on a terminal, else plain]",
    .expected = "one of auto, bar, plain, json, none",
    .take = choice<field, progressStyles>};
template <auto field>
inline constexpr Option verboseOption{.names = "--verbose",
                                      .placeholder = "",
                                      .help = "Also write the log to standard error",
                                      .flag = flag<field>};

}  // namespace zeb::cli
