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
#include "platform/text/NumberText.h"

/// The commands as tables. Parser, help, errors, manual and completions use the same rows.
namespace zeb::cli {

/// An option, or a positional value.
struct Option {
    const char* names = "";  ///< "-o,--output"; for a positional its label, without hyphens
    const char* placeholder =
        "";  ///< of the value in the help; empty for a switch; "..." for a repeatable positional
    const char* help = "";
    const char* expected = "";  ///< "one of 32, 4", for errors and completions; empty if any text is valid
    /// Stores a value in the command's arguments; returns false if the value is invalid. A switch without
    /// `flag` passes "true".
    bool (*take)(void* arguments, const std::string& text) = nullptr;
    bool& (*flag)(void* arguments) = nullptr;  ///< the field of a switch
    const char* excludes = "";  ///< names of earlier options that cannot be combined with it: "--frame,--at"
    bool isRequired = false;
    bool isRepeatable = false;
    const char* (*findExpected)() = nullptr;  ///< returns `expected`; null if it is constant

    bool isPositional() const { return names[0] != '-'; }
    bool takesValue() const { return placeholder[0] != '\0'; }
    const char* expectation() const { return findExpected != nullptr ? findExpected() : expected; }
};

/// Effect of an interrupt on a command.
enum class OnInterrupt {
    end,   ///< ends the process (the system's default)
    poll,  ///< the command polls `isInterrupted` and stops in order
};

struct Command {
    const char* name;     ///< as the first argument
    const char* summary;  ///< one line for the program's help
    std::span<const Option> options;
    const char* notes;  ///< shown below the options in its help
    std::shared_ptr<void> (*makeArguments)();
    /// Runs the command with the arguments that its options have filled. Throws `UsageError` before it
    /// changes anything.
    ExitCode (*run)(const void* arguments, Console& console);
    OnInterrupt onInterrupt = OnInterrupt::poll;
};

/// Options of the program and of every command.
inline constexpr Option helpOption{"-h,--help", "", "Print this help and exit"};
inline constexpr Option versionOption{"--version", "", "Print the version and exit"};

inline constexpr const char* programName = "zeb";
inline constexpr const char* programSummary =
    "Turns video files into ZEB movies for the Sinclair QL family and SMSQ/E.";

// MARK: Building blocks of rows

/// A word that represents a value.
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

/// Returns the field of a switch.
template <auto field>
bool& flag(void* arguments) {
    return fieldOf<field>(arguments);
}

/// Stores any text.
template <auto field>
bool anyText(void* arguments, const std::string& text) {
    fieldOf<field>(arguments) = text;
    return true;
}

/// Appends any text to a list.
template <auto field>
bool append(void* arguments, const std::string& text) {
    fieldOf<field>(arguments).push_back(text);
    return true;
}

/// Stores the result of `read`, a function that returns an optional value.
template <auto field, auto read>
bool parsed(void* arguments, const std::string& text) {
    const auto value = read(text);
    if (value) fieldOf<field>(arguments) = *value;
    return value.has_value();
}

/// Stores a text that is not empty.
template <auto field>
bool fileName(void* arguments, const std::string& text) {
    if (!text.empty()) fieldOf<field>(arguments) = text;
    return !text.empty();
}

/// Stores an integer from `lowest` to `highest`.
template <auto field, int lowest, int highest>
bool number(void* arguments, const std::string& text) {
    const std::optional<int> value = wholeNumber(text, lowest, highest);
    if (value) fieldOf<field>(arguments) = *value;
    return value.has_value();
}

/// Stores the value of one of the words of an array of `Choice`.
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

/// Returns the command that runs `action`: ExitCode action(const Arguments&, Console&).
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

/// --progress and --verbose, shared by all commands with long run times.
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
