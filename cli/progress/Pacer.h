#pragma once

#include <chrono>
#include <optional>

namespace zeb::cli {

/// Lets something happen at most once per interval.
class Pacer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit Pacer(std::chrono::milliseconds interval) : m_interval(interval) {}

    /// True, and the interval begins anew, when it is time again; always true the first time.
    bool isDue(TimePoint now) {
        if (m_last && now - *m_last < m_interval) return false;
        m_last = now;
        return true;
    }

private:
    std::chrono::milliseconds m_interval;
    std::optional<TimePoint> m_last;
};

}  // namespace zeb::cli
