#pragma once

#include <atomic>
#include <list>
#include <thread>

#include "platform/Tasks.h"

namespace zeb {

/// Tasks on threads of the system.
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
        std::jthread thread;  ///< last, so that it ends first
    };

    std::list<Running> m_running;  ///< and those that have ended since the last start
};

}  // namespace zeb
