#include <array>

#include "cli/Command.h"
#include "cli/commands/EncodeCommand.h"
#include "cli/commands/ExportCommand.h"
#include "cli/commands/InfoCommand.h"
#include "cli/commands/PlayCommand.h"
#include "cli/commands/RepairCommand.h"
#include "cli/commands/ThumbnailCommand.h"
#include "cli/commands/VerifyCommand.h"

namespace zeb::cli {

std::span<const Command> commands() {
    static constexpr std::array table = {
        Command{"encode", "Convert video files into ZEB movies", declareEncode},
        Command{"play", "Play ZEB movies in the application", declarePlay, OnInterrupt::end},
        Command{"info", "Show what ZEB movies contain", declareInfo},
        Command{"verify", "Check ZEB movies against every rule of the format", declareVerify},
        Command{"repair", "Make a finished movie of one that was cut short", declareRepair},
        Command{"export", "Turn a ZEB movie into ordinary pictures, film or sound", declareExport},
        Command{"thumbnail", "Make a small picture of a ZEB movie, for file managers", declareThumbnail},
    };
    return table;
}

}  // namespace zeb::cli
