#pragma once

#include <optional>
#include <string>

#include "platform/tasks/Clock.h"

namespace zeb {

/// Estimates how long a run still takes, from its progress at several moments: the speed is smoothed
/// exponentially, with a weight of 1/5 for the newest.
class RemainingTime {
public:
    /// Forgets everything: a run begins or has ended.
    void reset();
    /// The progress, 0 ... 1, at the moment `now`. Samples closer than a quarter of a second, or falling
    /// ones, are left out.
    void updateETA(double progress, Clock::Instant now);
    /// As a clock shows it, or "—".
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
