#pragma once

#include <string>

#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb {

/// What a run with these settings would make of a source.
struct TargetDescription {
    FrameSize size;
    int fps = 1;
    int qlModeNumber = 32;
    std::string audioText;  ///< localised

    bool operator==(const TargetDescription&) const = default;
};

TargetDescription targetDescription(const SourceInfo& source, const Settings& settings);

/// Source and target on one line, localised.
std::string sourceTargetText(const SourceInfo& source, const Settings& settings);

/// How the window names the program's version: "v0.1.0 (7)", "v—" without one; a build that is blank is left
/// out.
std::string versionText(const std::string& version, const std::string& build);

}  // namespace zeb
