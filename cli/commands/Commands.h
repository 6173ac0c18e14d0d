#pragma once

#include <array>

#include "cli/Command.h"

namespace zeb::cli {

extern const Command
    encodeCommand;                 ///< converts videos into movies; after a failure the next one is taken up
extern const Command playCommand;  ///< becomes the application, with movies to play
extern const Command infoCommand;  ///< shows what movies contain
extern const Command verifyCommand;     ///< checks movies against every rule of the format, one line for each
extern const Command repairCommand;     ///< makes a finished movie of one that was cut short
extern const Command exportCommand;     ///< turns a movie into ordinary pictures, sound or film
extern const Command thumbnailCommand;  ///< writes a small picture of a movie

/// All commands in the order of the help.
inline constexpr std::array commands = {&encodeCommand, &playCommand,   &infoCommand,     &verifyCommand,
                                        &repairCommand, &exportCommand, &thumbnailCommand};

}  // namespace zeb::cli
