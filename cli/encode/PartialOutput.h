#pragma once

#include <cstdint>
#include <string>

#include "platform/files/OutputPlace.h"

namespace zeb::cli {

/// What became of an output whose run ended early.
struct PartialOutcome {
    std::int64_t keptSeconds = 0;  ///< of the shorter movie; 0 = there is none
    std::string text;              ///< for a person; empty when there is nothing to tell
};

/// Ends the work on the output of a run that failed: makes its file a shorter movie that ends after its last
/// whole second and leaves the old movie aside, or removes the file when it has none and puts the old movie
/// back. Touches only a file that the run made. Throws nothing that files throw.
PartialOutcome settlePartialMovie(OutputPlace& output);

}  // namespace zeb::cli
