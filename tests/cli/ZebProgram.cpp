#include "tests/cli/ZebProgram.h"

#include <utility>

namespace zeb::test {

std::vector<std::string> zebCommand(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ZEB_PROGRAM);
    return arguments;
}

ChildProcess::Result runZeb(std::vector<std::string> arguments, const ChildProcess::Options& options) {
    return ChildProcess(zebCommand(std::move(arguments)), options).finish();
}

}  // namespace zeb::test
