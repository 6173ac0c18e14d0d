#include "cli/Program.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <memory>
#include <sstream>

#include "cli/Interruption.h"
#include "cli/commands/Commands.h"
#include "platform/text/ErrorText.h"

namespace zeb::cli {
namespace {

/// Joins the lines of a parser message: the program's errors have one line.
std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '.'))
        text.pop_back();
    return text;
}

void take(const Option& option, void* arguments, const std::string& text) {
    if (option.take(arguments, text)) return;
    const std::string error = std::string(option.names) + ": \"" + text + "\" is not " + option.expectation();
    throw CLI::ValidationError(error, CLI::ExitCodes::ValidationError);
}

void declare(CLI::App& parser, const Option& option, void* arguments) {
    CLI::Option* declared = nullptr;
    if (option.flag != nullptr) {
        declared = parser.add_flag(option.names, option.flag(arguments), option.help);
    } else if (!option.takesValue()) {
        declared = parser.add_flag_callback(
            option.names, [&option, arguments] { take(option, arguments, "true"); }, option.help);
    } else if (option.isRepeatable) {
        const auto takeAll = [&option, arguments](const std::vector<std::string>& texts) {
            for (const std::string& text : texts)
                take(option, arguments, text);
        };
        declared = parser.add_option_function<std::vector<std::string>>(option.names, takeAll, option.help)
                       ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    } else {
        const auto takeOne = [&option, arguments](const std::string& text) { take(option, arguments, text); };
        declared = parser.add_option_function<std::string>(option.names, takeOne, option.help);
    }
    if (option.takesValue()) declared->option_text(option.placeholder);
    if (option.takesValue() && !option.isPositional()) declared->type_name(option.placeholder);
    declared->required(option.isRequired);
    for (const std::string& name : splitList(option.excludes, ",")) {
        CLI::Option* other = parser.get_option(name);
        declared->excludes(other);
        // The text of a switch hides the list of excluded options, as that of an option with a value does.
        for (CLI::Option* either : {declared, other}) {
            if (either->get_items_expected_max() == 0) either->option_text(" ");
        }
    }
}

void prepare(CLI::App& parser) {
    parser.set_help_flag(helpOption.names, helpOption.help);
    // A later option overrides an earlier one, so that an alias can carry defaults.
    parser.option_defaults()->take_last();
}

void declareAll(CLI::App& parser, const Command& command, void* arguments) {
    for (const Option& option : command.options)
        declare(parser, option, arguments);
    const std::string notes = command.notes;
    parser.footer(notes + (notes.empty() ? "" : "\n\n") + exitCodeHelp);
}

/// The parser of the whole program and its result.
struct Program {
    CLI::App parser{programSummary, programName};
    const Command* chosen = nullptr;
    std::shared_ptr<void> arguments;  ///< of the chosen command

    Program() {
        parser.set_version_flag(versionOption.names, "zeb " ZEB_VERSION, versionOption.help);
        prepare(parser);
        parser.footer(exitCodeHelp);
        parser.require_subcommand(1);
        parser.get_formatter()->column_width(28);
        for (const Command* command : commands) {
            const std::shared_ptr<void> taken = command->makeArguments();
            CLI::App* subcommand = parser.add_subcommand(command->name, command->summary);
            declareAll(*subcommand, *command, taken.get());
            subcommand->callback([this, command, taken] {
                chosen = command;
                arguments = taken;
            });
        }
    }
};

/// Prefixes a file name "[a,b]" with "./", because the parser would treat it as a list of two. Values of
/// options are unchanged.
std::vector<std::string> withBracketsProtected(std::vector<std::string> words, const CLI::App& parser) {
    bool isValue = false;
    bool namesOnly = false;
    for (std::string& word : words) {
        const bool isBracketed = word.starts_with('[') && word.ends_with(']');
        if (isBracketed && !isValue) word.insert(0, "./");
        namesOnly = namesOnly || word == "--";
        const CLI::Option* option = namesOnly || isValue ? nullptr : parser.get_option_no_throw(word);
        isValue = option != nullptr && !option->get_positional() && option->get_items_expected_min() > 0;
    }
    return words;
}

void parse(CLI::App& parser, std::vector<std::string> words) {
    // The parser expects reverse order.
    std::reverse(words.begin(), words.end());
    parser.parse(words);
}

ExitCode parseAndRun(const std::vector<std::string>& words, Console& console) {
    Program program;
    const auto withHint = [&program](const std::string& text) {
        const std::vector<CLI::App*> chosen = program.parser.get_subcommands();
        const std::string name = chosen.empty() ? "" : chosen.front()->get_name() + " ";
        return UsageError(text + " (see \"zeb " + name + "--help\")");
    };
    try {
        std::vector<std::string> protectedWords = words;
        for (const CLI::App* command : program.parser.get_subcommands([](const CLI::App*) { return true; })) {
            if (!words.empty() && words[0] == command->get_name())
                protectedWords = withBracketsProtected(words, *command);
        }
        parse(program.parser, protectedWords);
        if (program.chosen->onInterrupt == OnInterrupt::poll) stopOnSignals();
        return program.chosen->run(program.arguments.get(), console);
    } catch (const UsageError& error) {
        throw withHint(error.what());
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        program.parser.exit(request, text, text);
        console.write(text.str());
        return console.outIsGood() ? ExitCode::done : ExitCode::unwritableOutput;
    } catch (const CLI::ParseError& error) {
        // An unknown argument explains more than the missing one it causes.
        const std::vector<std::string> unknown = program.parser.remaining(true);
        if (!unknown.empty()) throw withHint("unexpected argument \"" + unknown.front() + "\"");
        throw withHint(oneLine(error.what()));
    }
}

}  // namespace

ExitCode runProgram(const std::vector<std::string>& arguments, Console& console) noexcept {
    try {
        return parseAndRun(arguments, console);
    } catch (const UsageError& error) {
        console.complain(error.what());
        return ExitCode::wrongUsage;
    } catch (...) {
        console.complain(currentErrorText());
    }
    return ExitCode::conversionFailed;
}

void readArguments(const Command& command, const std::vector<std::string>& words, void* arguments) {
    CLI::App parser;
    prepare(parser);
    declareAll(parser, command, arguments);
    try {
        parse(parser, words);
    } catch (const CLI::ParseError& error) {
        throw UsageError(oneLine(error.what()));
    }
}

}  // namespace zeb::cli
