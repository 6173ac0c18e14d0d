#include <array>

#include "cli/Command.h"
#include "cli/EncodeCommand.h"
#include "cli/InfoCommand.h"

namespace zeb::cli {

std::span<const Command> commands() {
    static constexpr std::array table = {
        Command{"encode", "Convert video files into ZEB movies", declareEncode},
        Command{"info", "Show what ZEB movies contain", declareInfo},
    };
    return table;
}

}  // namespace zeb::cli
