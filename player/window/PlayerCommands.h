#pragma once

#include <functional>

#include "platform/text/URL.h"

namespace zeb {

/// The commands of the application's other windows that a player's keys give as well. An empty one does
/// nothing. Called on the main thread.
struct PlayerCommands {
    std::function<void()> chooseVideo;
    std::function<void()> playMovie;
    std::function<void()> showSettings;
    std::function<void()> showHelp;
    /// For what is dropped on a player: whether it is a movie, and how one is opened.
    std::function<bool(const URL&)> namesMovie;
    std::function<void(const URL&)> openMovie;
};

}  // namespace zeb
