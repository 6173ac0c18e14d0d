#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/Clock.h"

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
        ++m_sleepers;
        m_changed.notify_all();
        const bool reached = m_changed.wait(lock, token, [&] { return m_now >= deadline; });
        --m_sleepers;
        return reached;
    }
    Date date() const override {
        return Date{} + std::chrono::duration_cast<Date::duration>(now().time_since_epoch());
    }

    void advance(std::chrono::nanoseconds time) {
        const std::lock_guard lock(m_mutex);
        m_now += std::chrono::duration_cast<Instant::duration>(time);
        m_changed.notify_all();
    }
    /// Returns once a thread sleeps, which it does after having read the clock.
    void awaitSleeper() const {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_sleepers > 0; });
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable_any m_changed;
    mutable int m_sleepers = 0;
    Instant m_now{};
};

}  // namespace zeb::fake
