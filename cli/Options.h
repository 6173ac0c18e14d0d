#pragma once

#include <CLI/App.hpp>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cli/OptionNotes.h"
#include "cli/Text.h"
#include "cli/progress/ProgressStyle.h"

/// How commands declare their options. Only for .cpp files: it brings the parser along.
namespace zeb::cli {

/// A word that stands for a value.
template <typename Value>
struct Choice {
    const char* name;
    Value value;
};

/// An option whose text `read` turns into a value; without one the line says what was expected.
template <typename Value, typename Target>
CLI::Option* addOption(CLI::App& parser, const char* name, Target& target,
                       std::function<std::optional<Value>(std::string_view)> read, const char* expected,
                       const char* placeholder, const char* help) {
    const auto take = [&target, read = std::move(read), name, expected](const std::string& text) {
        const std::optional<Value> value = read(text);
        if (!value) {
            const std::string label = std::string(name) + ": \"" + text + "\" is not " + expected;
            throw CLI::ValidationError(label, CLI::ExitCodes::ValidationError);
        }
        target = *value;
    };
    CLI::Option* option = parser.add_option_function<std::string>(name, take, help)
                              ->type_name(placeholder)
                              ->option_text(placeholder);
    noteExpected(*option, expected);
    return option;
}

template <typename Value, typename Target, std::size_t count>
CLI::Option* addChoice(CLI::App& parser, const char* name, Target& target,
                       const std::array<Choice<Value>, count>& choices, const char* expected,
                       const char* placeholder, const char* help) {
    const auto read = [&choices](std::string_view text) -> std::optional<Value> {
        for (const Choice<Value>& choice : choices) {
            if (text == choice.name) return choice.value;
        }
        return std::nullopt;
    };
    return addOption<Value>(parser, name, target, read, expected, placeholder, help);
}

inline std::function<std::optional<int>(std::string_view)> numberBetween(int lowest, int highest) {
    return [lowest, highest](std::string_view text) { return wholeNumber(text, lowest, highest); };
}

inline std::optional<std::string> notEmpty(std::string_view text) {
    if (text.empty()) return std::nullopt;
    return std::string(text);
}

/// --progress and --verbose, as all commands that take their time have them.
inline void addReportingOptions(CLI::App& parser, ProgressStyle& progress, bool& verbose) {
    static constexpr std::array styles = {
        Choice<ProgressStyle>{"auto", ProgressStyle::automatic},
        Choice<ProgressStyle>{"bar", ProgressStyle::bar},
        Choice<ProgressStyle>{"plain", ProgressStyle::plain},
        Choice<ProgressStyle>{"json", ProgressStyle::json},
        Choice<ProgressStyle>{"none", ProgressStyle::none},
    };
    addChoice(parser, "--progress", progress, styles, "one of auto, bar, plain, json, none", "STYLE",
              "auto, bar, plain, json or none [auto: bar on a terminal, else plain]");
    parser.add_flag("--verbose", verbose, "Also log what happens, to standard error");
}

}  // namespace zeb::cli
