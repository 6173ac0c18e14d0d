#pragma once

#include <optional>
#include <string>

#include "platform/tasks/Clock.h"

namespace zeb {

/// Estimates the remaining time of a run from its progress. The speed is smoothed exponentially with a weight
/// of 1/5 for the latest sample.
class RemainingTime {
public:
    /// Resets the estimate at the beginning or end of a run.
    void reset();
    /// Adds a sample: the progress, 0 ... 1, at time `now`. Ignores samples that follow within a quarter of a
    /// second, and decreasing progress.
    void updateETA(double progress, Clock::Instant now);
    /// Formatted as a clock time, or "—".
    const std::string& etaText() const noexcept { return m_etaText; }

private:
    void takeSample(double progress, Clock::Instant now);
    std::string text(double progress) const;

    std::optional<Clock::Instant> m_lastSampleAt;
    double m_lastSampleProgress = 0;
    double m_emaSpeed = 0;  ///< progress per second
    std::string m_etaText = "—";
};

}  // namespace zeb
