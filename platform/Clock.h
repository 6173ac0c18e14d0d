#pragma once

#include <chrono>
#include <stop_token>

namespace zeb {

/// What time it is. Callable from any thread.
class Clock {
public:
    using Instant = std::chrono::steady_clock::time_point;
    using Date = std::chrono::system_clock::time_point;

    virtual ~Clock() = default;

    /// Monotonic, for measuring and waiting.
    virtual Instant now() const = 0;
    /// Waits until `deadline`; false, early, when `token` asks to stop.
    virtual bool sleepUntil(Instant deadline, const std::stop_token& token) const = 0;
    /// The calendar's time.
    virtual Date date() const = 0;
};

}  // namespace zeb
