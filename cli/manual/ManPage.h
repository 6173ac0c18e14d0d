#pragma once

#include <string>

#include "cli/manual/ProgramDescription.h"

namespace zeb::cli::manual {

/// The manual page, for man(7).
std::string manPage(const ProgramDescription& program);

}  // namespace zeb::cli::manual
