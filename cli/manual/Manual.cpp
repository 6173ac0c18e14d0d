#include "cli/manual/Manual.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/commands/Commands.h"

namespace zeb::cli::manual {
namespace {

constexpr std::string_view choicesStart = "one of ";

ValueKind kindOf(const Option& option) {
    if (!option.takesValue()) return ValueKind::none;
    const std::string_view expected = option.expectation();
    const std::string_view help = option.help;
    if (expected.starts_with(choicesStart)) return ValueKind::choice;
    if (option.isPositional())
        return help.find("ZEB movie") != std::string_view::npos ? ValueKind::movie : ValueKind::path;
    const bool isPath = std::string_view(option.placeholder).find("FILE") != std::string_view::npos ||
                        expected.find("file") != std::string_view::npos;
    return isPath ? ValueKind::path : ValueKind::other;
}

bool excludes(const Option& option, const Option& other) {
    const std::vector<std::string> names = splitList(option.excludes, ",");
    return std::ranges::any_of(splitList(other.names, ","), [&names](const std::string& name) {
        return std::ranges::find(names, name) != names.end();
    });
}

ArgumentDescription describeArgument(const Option& option) {
    ArgumentDescription argument;
    argument.text = option.help;
    argument.expected = option.expectation();
    argument.isRequired = option.isRequired;
    argument.isRepeatable = option.isRepeatable;
    argument.kind = kindOf(option);
    if (!option.isPositional()) argument.names = splitList(option.names, ",");
    if (argument.takesValue())
        argument.placeholder = option.isPositional() ? option.names : option.placeholder;
    if (argument.kind == ValueKind::choice)
        argument.choices = splitList(argument.expected.substr(choicesStart.size()), ", ");
    return argument;
}

CommandDescription describeCommand(const Command& command) {
    CommandDescription description;
    description.name = command.name;
    description.summary = command.summary;
    description.notes = command.notes;
    description.options.push_back(describeArgument(helpOption));
    for (const Option& option : command.options) {
        ArgumentDescription argument = describeArgument(option);
        for (const Option& other : command.options) {
            if (!excludes(option, other) && !excludes(other, option)) continue;
            const std::vector<std::string> names = splitList(other.names, ",");
            argument.excludes.insert(argument.excludes.end(), names.begin(), names.end());
        }
        (option.isPositional() ? description.positionals : description.options)
            .push_back(std::move(argument));
    }
    return description;
}

}  // namespace

ProgramDescription describeProgram() {
    ProgramDescription program;
    program.name = programName;
    program.version = "zeb " ZEB_VERSION;
    program.summary = programSummary;
    program.options = {describeArgument(versionOption), describeArgument(helpOption)};
    for (const Command* command : commands)
        program.commands.push_back(describeCommand(*command));
    return program;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string escaped(const std::string& text, const std::string& special, const std::string& mark) {
    std::string result;
    for (const char character : text) {
        if (special.find(character) != std::string::npos) result += mark;
        result += character;
    }
    return result;
}

std::string shellQuoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text)
        result += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return result + "'";
}

}  // namespace zeb::cli::manual
