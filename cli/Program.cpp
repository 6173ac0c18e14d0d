#include "cli/Program.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <functional>
#include <memory>
#include <sstream>

#include "cli/Parser.h"
#include "cli/UsageError.h"
#include "platform/text/ErrorText.h"

namespace zeb::cli {
namespace {

// The parser's messages may span lines; a person gets one.
std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '.'))
        text.pop_back();
    return text;
}

// The parser takes a file named "[a,b]" for a list of two. Written as "./[a,b]" it is a file again; values of
// options stay as they are.
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

ExitCode parseAndRun(const std::vector<std::string>& arguments, Console& console) {
    std::function<ExitCode()> run;
    const std::unique_ptr<CLI::App> parser = makeParser(console, run);
    CLI::App& program = *parser;
    const auto withHint = [&program](const std::string& text) {
        const std::vector<CLI::App*> chosen = program.get_subcommands();
        const std::string name = chosen.empty() ? "" : chosen.front()->get_name() + " ";
        return UsageError(text + " (see \"zeb " + name + "--help\")");
    };
    try {
        std::vector<std::string> words = arguments;
        for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
            if (!words.empty() && words[0] == command->get_name())
                words = withBracketsProtected(words, *command);
        }
        // The parser takes them last one first.
        std::reverse(words.begin(), words.end());
        program.parse(words);
        return run();
    } catch (const UsageError& error) {
        throw withHint(error.what());
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        program.exit(request, text, text);
        console.write(text.str());
        return console.outIsGood() ? ExitCode::done : ExitCode::unwritableOutput;
    } catch (const CLI::ParseError& error) {
        // What nobody took explains more than what is missing because of it.
        const std::vector<std::string> unknown = program.remaining(true);
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

}  // namespace zeb::cli
