#pragma once

#include <string>

namespace CLI {
class Option;
}

namespace zeb::cli {

/// Keeps with `option` what its value must be ("one of 32, 4", "a file or folder"), for the manual and the
/// completions. Neither the help nor the errors change by it.
void noteExpected(CLI::Option& option, std::string expected);

/// What was noted; empty without a note.
std::string notedExpectation(CLI::Option& option);

}  // namespace zeb::cli
