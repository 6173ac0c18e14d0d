#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace zeb::cli {

/// Measures frames per second over the last few seconds, so that an estimate follows slow and fast scenes
/// without jumping from frame to frame.
class SpeedMeter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit SpeedMeter(TimePoint start) : m_marks{{start, 0}} {}

    /// Records that `framesDone` frames are done at `now`. Both must not decrease.
    void note(TimePoint now, std::int64_t framesDone);

    /// Frames per second; 0 if not known yet.
    double speed() const { return m_speed; }

    /// Returns the seconds for `frames` more frames at this speed; empty if not known yet.
    std::optional<double> secondsFor(std::int64_t frames) const;

private:
    struct Mark {
        TimePoint time;
        std::int64_t frames;
    };
    std::deque<Mark> m_marks;  // the oldest begins the measured time; never empty
    double m_speed = 0;
};

/// Limits an action to once per interval.
class Pacer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit Pacer(std::chrono::milliseconds interval) : m_interval(interval) {}

    /// Returns true, and restarts the interval, if the interval is over; always true the first time.
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
