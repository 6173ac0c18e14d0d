#pragma once

#include <string>

#include "cli/manual/ProgramDescription.h"

namespace zeb::cli::manual {

/// Completions for fish.
std::string fishCompletion(const ProgramDescription& program);

}  // namespace zeb::cli::manual
