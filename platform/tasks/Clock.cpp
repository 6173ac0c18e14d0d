#include "platform/tasks/Clock.h"

#include <condition_variable>
#include <mutex>

namespace zeb {

Clock::Instant SystemClock::now() const {
    return std::chrono::steady_clock::now();
}

bool SystemClock::sleepUntil(Instant deadline, const std::stop_token& token) const {
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait_until(lock, token, deadline, [] { return false; });
    return !token.stop_requested();
}

Clock::Date SystemClock::date() const {
    return std::chrono::system_clock::now();
}

}  // namespace zeb
