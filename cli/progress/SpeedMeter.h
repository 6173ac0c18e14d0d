#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace zeb::cli {

/// Measures frames per second over the last few seconds, so that an estimate follows scenes that are slow or
/// quick to decode without jumping from frame to frame.
class SpeedMeter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit SpeedMeter(TimePoint start) : m_marks{{start, 0}} {}

    /// Notes that `framesDone` frames are done by `now`. Both never fall.
    void note(TimePoint now, std::int64_t framesDone);

    /// Frames per second; 0 when not known yet.
    double speed() const { return m_speed; }

    /// Seconds that `frames` more frames take at this speed; nothing when not known yet.
    std::optional<double> secondsFor(std::int64_t frames) const;

private:
    struct Mark {
        TimePoint time;
        std::int64_t frames;
    };
    std::deque<Mark> m_marks;  // the oldest one begins the measured time; never empty
    double m_speed = 0;
};

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
