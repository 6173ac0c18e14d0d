#pragma once

#include <string>

#include "cli/manual/ProgramDescription.h"

namespace zeb::cli::manual {

/// Completions for zsh, as the function _zeb.
std::string zshCompletion(const ProgramDescription& program);

}  // namespace zeb::cli::manual
