#pragma once

#include <chrono>
#include <functional>

namespace zeb {

/// The main thread, to which everything that a window shows belongs. Work runs there one piece after another,
/// never inside `post`, and must not throw. May be called from any thread; work that is still waiting when
/// the actor is destroyed is dropped.
class MainActor {
public:
    using Work = std::function<void()>;

    virtual ~MainActor() = default;

    /// Runs `work` soon, in the order of the calls.
    virtual void post(Work work) = 0;
    /// Runs `work` once `delay` has passed.
    virtual void postAfter(std::chrono::nanoseconds delay, Work work) = 0;
};

}  // namespace zeb
