#pragma once

#include <chrono>
#include <functional>

namespace zeb {

/// Runs work on the main thread, which owns all state of the windows. Work runs in sequence, never inside
/// `post`, and must not throw. Callable from any thread. Work that still waits when the actor is destroyed is
/// dropped.
class MainActor {
public:
    using Work = std::function<void()>;

    virtual ~MainActor() = default;

    /// Runs `work` later, in the order of the calls.
    virtual void post(Work work) = 0;
    /// Runs `work` once `delay` has passed.
    virtual void postAfter(std::chrono::nanoseconds delay, Work work) = 0;
};

}  // namespace zeb
