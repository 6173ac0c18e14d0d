#pragma once

#include <string>

#include "conversion/forecast/SizeForecast.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb {

/// Properties of the movie that a run with these settings would create.
struct TargetDescription {
    FrameSize size;
    int fps = 1;
    int qlModeNumber = 32;
    std::string audioText;  ///< localised

    bool operator==(const TargetDescription&) const = default;
};

TargetDescription targetDescription(const SourceInfo& source, const Settings& settings);

/// Returns source and target on one line, localised.
std::string sourceTargetText(const SourceInfo& source, const Settings& settings);

/// Returns the program's version as shown by the window: "v0.1.0 (7)"; "v—" without a version. A blank build
/// is omitted.
std::string versionText(const std::string& version, const std::string& build);

/// Returns the localised text about a movie's size: the size, or a warning that the movie would not fit, with
/// suggestions.
std::string forecastText(const SizeForecast& forecast);

}  // namespace zeb
