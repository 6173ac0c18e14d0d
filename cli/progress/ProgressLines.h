#pragma once

#include <string>
#include <string_view>

#include "cli/progress/ProgressState.h"

/// The lines that tell a person how far a conversion is.
namespace zeb::cli {

/// "[#####.....]  50 %  123.4 fps  0:12 left  3.4 MB" in at most `columns` characters (0: unknown, taken as
/// 80). Where that is little, the size goes first, then the bar, the speed and the time left.
std::string barLine(const ProgressState& state, int columns);

/// "  50 %  125 of 250 frames  123.4 fps  0:12 left  3.4 MB"
std::string plainLine(const ProgressState& state);

/// `text` made printable and cut to fit `columns` (0: unknown, taken as 80).
std::string fittedLine(std::string_view text, int columns);

}  // namespace zeb::cli
