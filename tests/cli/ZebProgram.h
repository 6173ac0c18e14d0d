#pragma once

#include <string>
#include <vector>

#include "tests/cli/ChildProcess.h"

namespace zeb::test {

/// Runs `zeb` with `arguments` to its end.
ChildProcess::Result runZeb(std::vector<std::string> arguments, const ChildProcess::Options& options = {});

/// The words that start `zeb` with `arguments`.
std::vector<std::string> zebCommand(std::vector<std::string> arguments);

}  // namespace zeb::test
