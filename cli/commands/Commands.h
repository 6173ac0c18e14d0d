#pragma once

#include <array>

#include "cli/Command.h"

namespace zeb::cli {

extern const Command
    encodeCommand;  ///< converts videos into movies; continues with the next one after a failure
extern const Command previewCommand;    ///< writes a frame as a conversion would make it, or a sheet of them
extern const Command playCommand;       ///< replaces the process by the application, with movies to play
extern const Command infoCommand;       ///< shows what movies contain
extern const Command verifyCommand;     ///< checks movies against every rule of the format, one line each
extern const Command repairCommand;     ///< completes a movie that was cut short
extern const Command exportCommand;     ///< converts a movie to standard pictures, sound or video
extern const Command thumbnailCommand;  ///< writes a small picture of a movie
extern const Command compareCommand;    ///< measures how movies differ from their film

/// All commands in help order.
inline constexpr std::array commands = {&encodeCommand, &previewCommand,   &playCommand,
                                        &infoCommand,   &verifyCommand,    &repairCommand,
                                        &exportCommand, &thumbnailCommand, &compareCommand};

}  // namespace zeb::cli
