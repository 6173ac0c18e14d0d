#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/progress/ProgressStyle.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace CLI {
class App;
}

namespace zeb::cli {

/// What was asked of `zeb encode`. Empty options leave the choice to the analysis of the source.
struct EncodeArguments {
    std::vector<std::string> inputs;    ///< at least one
    std::optional<std::string> output;  ///< a file, or the folder for files named after the inputs
    std::optional<std::string> title;
    std::optional<FrameSize> size;
    bool stretch = false;  ///< do not keep the aspect
    std::optional<int> fps;
    int mode = 32;
    bool dither = false;
    int audioChannels = 2;  ///< 0 = no sound
    int track = 1;          ///< the sound track, from 1
    bool loop = false;
    int threads = 0;        ///< 0 = one per processor core
    bool force = false;     ///< replace an existing output
    bool estimate = false;  ///< tell only how large the movies would be
    ProgressStyle progress = ProgressStyle::automatic;
    bool verbose = false;
};

/// Declares the arguments on `parser`, which fills `arguments` (they must live as long as it). Values out of
/// range make it throw its own parse error with one clear line.
void declareEncodeArguments(CLI::App& parser, EncodeArguments& arguments);

/// The settings for one input: what was asked for, and for the rest what the window would propose.
Settings settingsFor(const EncodeArguments& arguments, const std::string& input, const SourceInfo& source);

}  // namespace zeb::cli
