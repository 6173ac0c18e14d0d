#pragma once

#include <cstdint>
#include <string>

#include "platform/files/OutputPlace.h"

namespace zeb::cli {

/// State of an output whose run ended early.
struct PartialOutcome {
    std::int64_t keptSeconds = 0;  ///< of the shorter movie; 0 = no movie
    std::string text;              ///< for the user; empty if there is nothing to report
};

/// Settles the output of a failed run. Shortens its file to a movie of whole seconds and leaves the previous
/// movie aside. If it has no whole second, removes the file and moves the previous movie back. Changes only a
/// file created by the run. Does not throw file errors.
PartialOutcome settlePartialMovie(OutputPlace& output);

}  // namespace zeb::cli
