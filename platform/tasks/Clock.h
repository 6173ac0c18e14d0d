#pragma once

#include <chrono>
#include <stop_token>

namespace zeb {

/// A source of time. Callable from any thread.
class Clock {
public:
    using Instant = std::chrono::steady_clock::time_point;
    using Date = std::chrono::system_clock::time_point;

    virtual ~Clock() = default;

    /// Returns monotonic time, for measuring and waiting.
    virtual Instant now() const = 0;
    /// Waits until `deadline`. Returns false, early, if a stop of `token` is requested.
    virtual bool sleepUntil(Instant deadline, const std::stop_token& token) const = 0;
    /// Returns the calendar time.
    virtual Date date() const = 0;
};

/// The clock of the system.
class SystemClock final : public Clock {
public:
    Instant now() const override;
    bool sleepUntil(Instant deadline, const std::stop_token& token) const override;
    Date date() const override;
};

}  // namespace zeb
