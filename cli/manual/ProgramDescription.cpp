#include "cli/manual/ProgramDescription.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "cli/ExitCode.h"
#include "cli/OptionNotes.h"

namespace zeb::cli::manual {
namespace {

constexpr std::string_view choicesStart = "one of ";

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::vector<std::string> choicesIn(std::string_view list) {
    constexpr std::string_view separator = ", ";
    std::vector<std::string> choices;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        choices.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + separator.size(), list.size()));
    }
    return choices;
}

ValueKind kindOf(const CLI::Option& option, const ArgumentDescription& argument) {
    if (option.get_items_expected_max() == 0) return ValueKind::none;
    if (argument.expected.starts_with(choicesStart)) return ValueKind::choice;
    if (option.get_positional())
        return argument.text.find("ZEB movie") != std::string::npos ? ValueKind::movie : ValueKind::path;
    const bool isPath = argument.placeholder.find("FILE") != std::string::npos ||
                        argument.expected.find("file") != std::string::npos;
    return isPath ? ValueKind::path : ValueKind::other;
}

ArgumentDescription describeArgument(CLI::Option& option) {
    ArgumentDescription argument;
    argument.names = namesOf(option);
    argument.text = option.get_description();
    argument.expected = notedExpectation(option);
    argument.isRequired = option.get_required();
    argument.isRepeatable = option.get_items_expected_max() > 1;
    argument.placeholder = option.get_positional() ? option.get_name(true) : option.get_type_name();
    argument.kind = kindOf(option, argument);
    if (!argument.takesValue()) argument.placeholder.clear();
    if (argument.kind == ValueKind::choice)
        argument.choices = choicesIn(std::string_view(argument.expected).substr(choicesStart.size()));
    return argument;
}

// The set of excluded options is ordered by address; the order of declaration makes the same bytes each time.
void describeArguments(CLI::App& parser, std::vector<ArgumentDescription>& options,
                       std::vector<ArgumentDescription>& positionals) {
    const std::vector<CLI::Option*> all = parser.get_options(std::function<bool(CLI::Option*)>());
    for (CLI::Option* option : all) {
        ArgumentDescription argument = describeArgument(*option);
        for (const CLI::Option* other : all) {
            if (option->get_excludes().contains(const_cast<CLI::Option*>(other))) {
                const std::vector<std::string> names = namesOf(*other);
                argument.excludes.insert(argument.excludes.end(), names.begin(), names.end());
            }
        }
        (option->get_positional() ? positionals : options).push_back(std::move(argument));
    }
}

std::string withoutExitCodes(std::string text) {
    text.resize(std::min(text.find(exitCodeHelp), text.size()));
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

}  // namespace

ProgramDescription describe(CLI::App& parser) {
    ProgramDescription program;
    program.name = parser.get_name();
    program.version = parser.version();
    program.summary = parser.get_description();
    std::vector<ArgumentDescription> none;
    describeArguments(parser, program.options, none);
    for (CLI::App* command : parser.get_subcommands(std::function<bool(CLI::App*)>())) {
        CommandDescription& description = program.commands.emplace_back();
        description.name = command->get_name();
        description.summary = command->get_description();
        description.notes = withoutExitCodes(command->get_footer());
        describeArguments(*command, description.options, description.positionals);
    }
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
