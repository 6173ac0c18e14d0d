#pragma once

#include "cli/progress/Pacer.h"
#include "cli/progress/ProgressReporter.h"

namespace zeb::cli {

/// Lines on standard output: what is going to be made, then how far it is at whole seconds of the movie,
/// about one line per second of work.
class PlainProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void planned(const Settings& settings, const ConversionPlan& plan) override;
    void forecast(const Settings& settings, const SizeForecast& forecast) override;
    void advanced(const ProgressState& state) override;

private:
    Pacer m_pacer{std::chrono::seconds(1)};
    std::int64_t m_secondsShown = 0;
};

}  // namespace zeb::cli
