#include "cli/OptionNotes.h"

#include <CLI/Option.hpp>
#include <utility>

namespace zeb::cli {

void noteExpected(CLI::Option& option, std::string expected) {
    // A validator's description would show in the parser's errors; its name is never shown.
    CLI::Validator note([](std::string&) { return std::string(); }, "", std::move(expected));
    option.check(note);
}

std::string notedExpectation(CLI::Option& option) {
    try {
        return option.get_validator(0)->get_name();
    } catch (const CLI::OptionNotFound&) {
        return "";
    }
}

}  // namespace zeb::cli
