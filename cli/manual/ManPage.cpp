#include "cli/manual/Manual.h"

#include <cctype>
#include <sstream>
#include <string_view>

#include "cli/Failure.h"

namespace zeb::cli::manual {
namespace {

struct Example {
    const char* command;  ///< shown only if the program has it
    const char* text;
    const char* line;
};

constexpr Example examples[] = {
    {"encode", "Convert a film; title, size and rate as it suggests:", "zeb encode holiday.mp4"},
    {"encode", "Convert several films to the four colours of Mode 4, into a folder:",
     "zeb encode *.mp4 -o movies --mode 4 --dither"},
    {"encode", "Fill a screen of 512 x 256, with the second sound track in mono:",
     "zeb encode clip.mkv --size 512x256 --stretch --audio mono --track 2"},
    {"encode", "Convert a minute of a film to four colours that look like it, without black bars:",
     "zeb encode film.mkv --mode 4 --colours natural --crop auto --from 1:00 --to 2:00"},
    {"preview", "Show a frame before the movie is made, beside the film's picture:",
     "zeb preview film.mkv --at 1:05 --mode 4 --colours natural --side-by-side -o look.png"},
    {"info", "Show what a movie contains, for a script:", "zeb info --json holiday.zeb"},
    {"verify", "Check all movies of a folder:", "zeb verify movies/*.zeb"},
    {"repair", "Finish a movie that a crash cut short:", "zeb repair broken.zeb -o mended.zeb"},
    {"export", "Make a film for every player:", "zeb export holiday.zeb -o holiday.mp4"},
    {"compare",
     "Measure which of two movies looks more like the film:", "zeb compare holiday.mp4 a.zeb b.zeb"},
};

std::string asTyped(char character) {
    switch (character) {
        case '\\':
            return "\\e";
        case '-':
            return "\\-";
        case '\'':
            return "\\(aq";
        case '`':
            return "\\(ga";
        case '^':
            return "\\(ha";
        case '~':
            return "\\(ti";
        case '"':
            return "\\(dq";
        default:
            return std::string(1, character);
    }
}

// Escapes a full stop at the start of a line, which would be a request.
std::string line(const std::string& text) {
    return (text.starts_with('.') ? "\\&" : "") + text + "\n";
}

// Escapes text so that every character is output unchanged and can be copied into a shell.
std::string literal(const std::string& text) {
    std::string result;
    for (const char character : text)
        result += asTyped(character);
    return result;
}

// Escapes running text. Hyphens stay hyphens, except in words that begin with one: options must be searchable
// and copyable.
std::string prose(const std::string& text) {
    constexpr std::string_view wordStarts = " \"([";
    std::string result;
    char previous = ' ';
    bool isOption = false;
    for (const char character : text) {
        const bool isAtStart = wordStarts.find(previous) != std::string_view::npos;
        isOption = isAtStart ? character == '-' : isOption;
        const bool isHyphen = character == '-' && !isOption;
        result += isHyphen ? "-" : character == '\'' ? "\\(cq" : asTyped(character);
        previous = character;
    }
    return result;
}

std::string capitalised(std::string text) {
    if (!text.empty())
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text;
}

std::string bold(const std::string& text) {
    return "\\fB" + literal(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + literal(text) + "\\fR";
}

std::string heading(const std::string& text) {
    return ".SH " + text + "\n";
}

std::string item(const std::string& label, const std::string& text) {
    return ".TP\n" + line(label) + line(text);
}

std::string optionItem(const ArgumentDescription& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.names)
        names.push_back(bold(name));
    std::string label = joined(names, ", ");
    if (option.takesValue()) label += " " + italic(option.placeholder);
    std::string text = prose(option.text) + (option.text.ends_with('.') ? "" : ".");
    // The description already contains the values of a choice and the kinds of files.
    if (option.kind == ValueKind::other && !option.expected.empty())
        text += "\n" + italic(option.placeholder) + " is " + prose(option.expected) + ".";
    if (!option.excludes.empty()) {
        std::vector<std::string> others;
        for (const std::string& name : option.excludes)
            others.push_back(bold(name));
        text += "\nNot together with " + joined(others, ", ") + ".";
    }
    return item(label, text);
}

std::string positionalLabel(const ArgumentDescription& positional) {
    return italic(positional.placeholder) + (positional.isRepeatable ? " ..." : "");
}

std::string synopsis(const std::string& program, const CommandDescription& command) {
    std::string text = bold(program) + " " + bold(command.name) + " [" + italic("option") + " ...]";
    for (const ArgumentDescription& option : command.options) {
        if (option.isRequired) text += " " + bold(option.names.front()) + " " + italic(option.placeholder);
    }
    for (const ArgumentDescription& positional : command.positionals)
        text += " " + positionalLabel(positional);
    return text;
}

// Converts the free text of a help: indented lines are tables and keep their layout, other lines are filled.
std::string notes(const std::string& text) {
    std::string result = text.empty() ? "" : ".PP\n";
    bool isTable = false;
    std::istringstream lines(text);
    for (std::string each; std::getline(lines, each);) {
        if (each.empty()) {
            result += ".PP\n";
            continue;
        }
        if (each.starts_with(' ') != isTable) result += isTable ? ".EE\n.PP\n" : ".PP\n.EX\n";
        isTable = each.starts_with(' ');
        result += line(isTable ? literal(each) : prose(each));
    }
    return result + (isTable ? ".EE\n" : "");
}

std::string commandText(const std::string& program, const CommandDescription& command) {
    std::string text = ".SS " + literal(command.name) + "\n" + line(synopsis(program, command)) + ".PP\n" +
                       line(prose(command.summary) + ".");
    for (const ArgumentDescription& positional : command.positionals)
        text += item(positionalLabel(positional), prose(positional.text) + ".");
    for (const ArgumentDescription& option : command.options)
        text += optionItem(option);
    return text + notes(command.notes);
}

// Converts the help's table of exit codes: number and meaning in each indented line, then remarks.
std::string exitStatus() {
    std::string text = heading("EXIT STATUS");
    std::string remarks;
    std::istringstream lines(exitCodeHelp);
    for (std::string each; std::getline(lines, each);) {
        if (each.starts_with(' ')) {
            std::istringstream row(each);
            std::string code;
            std::string meaning;
            row >> code >> std::ws;
            std::getline(row, meaning);
            meaning = capitalised(meaning);
            text += item(bold(code), prose(meaning) + ".");
        } else if (!each.ends_with(':')) {
            remarks += line(prose(each));
        }
    }
    return text + ".PP\n" + remarks;
}

std::string environment() {
    return heading("ENVIRONMENT") +
           item(bold("LC_ALL") + ", " + bold("LC_MESSAGES") + ", " + bold("LANG") + ", " + bold("LANGUAGE"),
                "The language of errors, warnings and the log, as for other programs; English and German are "
                "there.") +
           item(bold("NO_COLOR"), "If it is set and not empty, nothing is coloured.") +
           item(bold("TERM"), "With the value " + bold("dumb") +
                                  " a terminal gets neither colours nor lines that are redrawn.");
}

std::string exampleTexts(const ProgramDescription& program) {
    std::string text = heading("EXAMPLES");
    for (const CommandDescription& command : program.commands) {
        for (const Example& example : examples) {
            if (command.name != example.command) continue;
            text += ".PP\n" + line(prose(example.text)) + ".PP\n.RS 4\n.EX\n" + line(literal(example.line)) +
                    ".EE\n.RE\n";
        }
    }
    return text;
}

}  // namespace

std::string manPage(const ProgramDescription& program) {
    // No date, so that the output is reproducible.
    std::string text = ".TH ZEB 1 \"\" \"" + literal(program.version) + "\" \"User Commands\"\n" +
                       ".\\\" Written by the build from the program's own options.\n.nh\n.ad l\n";
    std::string summary = program.summary;
    while (summary.ends_with('.'))
        summary.pop_back();
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    text += heading("NAME") + literal(program.name) + " \\- " + line(prose(summary));
    text += heading("SYNOPSIS");
    for (const CommandDescription& command : program.commands)
        text += line(synopsis(program.name, command)) + ".br\n";
    text += line(bold(program.name) + " [" + bold("--help") + " | " + bold("--version") + "]");
    text +=
        heading("DESCRIPTION") + line(prose(program.summary)) +
        line("Each command has options of its own; of an option that is given twice the last one counts.") +
        line("After " + bold("--") + " every word is a file name, also one that starts with a hyphen.");
    for (const ArgumentDescription& option : program.options)
        text += optionItem(option);
    text += heading("COMMANDS");
    for (const CommandDescription& command : program.commands)
        text += commandText(program.name, command);
    return text + exitStatus() + environment() + exampleTexts(program);
}

}  // namespace zeb::cli::manual
