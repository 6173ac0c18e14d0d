#pragma once

#include <condition_variable>
#include <iterator>
#include <mutex>
#include <set>

#include "platform/tasks/Clock.h"

namespace zeb::fake {

/// A clock that stands still until a test advances it.
class HandDrivenClock final : public Clock {
public:
    Instant now() const override {
        const std::lock_guard lock(m_mutex);
        return m_now;
    }
    bool sleepUntil(Instant deadline, const std::stop_token& token) const override {
        std::unique_lock lock(m_mutex);
        m_deadlines.insert(deadline);
        const bool isReached = m_changed.wait(lock, token, [&] { return m_now >= deadline; });
        m_deadlines.erase(m_deadlines.find(deadline));
        return isReached;
    }
    Date date() const override {
        return Date{} + std::chrono::duration_cast<Date::duration>(now().time_since_epoch());
    }

    void advance(std::chrono::nanoseconds time) {
        const std::lock_guard lock(m_mutex);
        m_now += std::chrono::duration_cast<Instant::duration>(time);
        m_changed.notify_all();
    }
    /// Number of sleeping threads whose deadline has not been reached.
    int sleepers() const {
        const std::lock_guard lock(m_mutex);
        return static_cast<int>(std::distance(m_deadlines.upper_bound(m_now), m_deadlines.end()));
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable_any m_changed;
    mutable std::multiset<Instant> m_deadlines;  ///< of the sleeping threads
    Instant m_now{};
};

}  // namespace zeb::fake
