#pragma once

#include <string>

#include "cli/manual/ProgramDescription.h"

namespace zeb::cli::manual {

/// Completions for bash; the completion library of the system is not needed.
std::string bashCompletion(const ProgramDescription& program);

}  // namespace zeb::cli::manual
