#include "platform/tasks/ThreadTasks.h"

#include <sys/resource.h>
#include <unistd.h>
#include <utility>

#include "platform/tasks/Tasks.h"

namespace zeb {

ThreadTasks::~ThreadTasks() {
    // Request all stops before the first join.
    for (Running& task : m_running)
        task.thread.request_stop();
}

Task ThreadTasks::start(TaskPriority priority, Work work) {
    m_running.remove_if([](const Running& task) { return task.hasEnded.load(); });
    Running& task = m_running.emplace_back();
    task.thread =
        std::jthread([&task, priority, work = std::move(work)](const std::stop_token& token) mutable {
            if (priority == TaskPriority::utility) giveWayToOtherThreads();
            work(token);
            work = nullptr;  // destroys the captured state before the task counts as ended
            task.hasEnded = true;
        });
    return Task(task.thread.get_stop_source());
}

void giveWayToOtherThreads() noexcept {
#ifdef __linux__
    // On Linux a nice value belongs to the thread, not to the process.
    constexpr int niceness = 5;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceness);
#endif
}

}  // namespace zeb
