#pragma once

#include "cli/progress/ProgressReporter.h"

namespace zeb::cli {

/// Nothing on the way, the summary at the end.
class SilentProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void advanced(const ProgressState&) override {}
};

}  // namespace zeb::cli
