#pragma once

#include <functional>
#include <stop_token>

namespace zeb {

enum class TaskPriority {
    userInitiated,  ///< somebody waits for the result
    utility,        ///< gives way to everything else
};

/// A piece of work in the background. Copies are handles to the same task; dropping them does not end it.
class Task {
public:
    explicit Task(std::stop_source source) : m_source(std::move(source)) {}

    /// Asks the work to stop; it ends when it next looks. Any thread.
    void cancel() { m_source.request_stop(); }
    bool isCancelled() const { return m_source.stop_requested(); }

private:
    std::stop_source m_source;
};

/// Runs work away from the main thread. Used on the main thread.
class Tasks {
public:
    /// Must not throw. The token tells when the task has been cancelled.
    using Work = std::function<void(const std::stop_token&)>;

    /// Cancels the tasks that still run and waits for them.
    virtual ~Tasks() = default;

    /// Begins `work` on a thread of its own.
    virtual Task start(TaskPriority priority, Work work) = 0;
};

}  // namespace zeb
