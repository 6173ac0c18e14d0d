#pragma once

#include <atomic>
#include <list>
#include <thread>

#include "platform/tasks/Tasks.h"

namespace zeb {

/// Tasks on system threads.
class ThreadTasks final : public Tasks {
public:
    ThreadTasks() = default;
    ~ThreadTasks() override;
    ThreadTasks(const ThreadTasks&) = delete;
    ThreadTasks& operator=(const ThreadTasks&) = delete;

    Task start(TaskPriority priority, Work work) override;

private:
    struct Running {
        std::atomic<bool> hasEnded = false;
        std::jthread thread;  ///< last member: joined first
    };

    std::list<Running> m_running;  ///< also tasks that have ended since the last start
};

}  // namespace zeb
