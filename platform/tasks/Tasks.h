#pragma once

#include <functional>
#include <stop_token>

namespace zeb {

/// Lowers the priority of the calling thread below the other threads of the process. Does nothing on systems
/// without this.
void giveWayToOtherThreads() noexcept;

enum class TaskPriority {
    userInitiated,  ///< the user waits for the result
    utility,        ///< lower than all other work
};

/// Handle of background work. Copies refer to the same task; destroying them does not end the task.
class Task {
public:
    explicit Task(std::stop_source source) : m_source(std::move(source)) {}

    /// Requests a stop; the work ends at its next check. Callable from any thread.
    void cancel() { m_source.request_stop(); }
    bool isCancelled() const { return m_source.stop_requested(); }

private:
    std::stop_source m_source;
};

/// Runs work away from the main thread. Used on the main thread.
class Tasks {
public:
    /// Must not throw. The token reports cancellation.
    using Work = std::function<void(const std::stop_token&)>;

    /// Cancels running tasks and waits for them.
    virtual ~Tasks() = default;

    /// Starts `work` on a new thread.
    virtual Task start(TaskPriority priority, Work work) = 0;
};

}  // namespace zeb
