#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <stop_token>
#include <utility>

#include "platform/tasks/Tasks.h"

namespace zeb::fake {

/// Tasks that a test runs one by one on its own thread.
class HandDrivenTasks final : public Tasks {
public:
    Task start(TaskPriority, Work work) override {
        std::stop_source source;
        m_waiting.push_back({source, std::move(work)});
        return Task(source);
    }

    /// Runs the oldest waiting task to its end. Returns false if no task waits.
    bool runNext() {
        if (m_waiting.empty()) return false;
        const Waiting task = std::move(m_waiting.front());
        m_waiting.pop_front();
        task.work(task.source.get_token());
        return true;
    }
    /// Runs the newest waiting task to its end. At least one task must wait.
    void runNewest() {
        std::rotate(m_waiting.begin(), std::prev(m_waiting.end()), m_waiting.end());
        runNext();
    }
    /// Runs all waiting tasks, including those that they start.
    void runAll() {
        while (runNext()) {
        }
    }
    std::size_t waiting() const { return m_waiting.size(); }

private:
    struct Waiting {
        std::stop_source source;
        Work work;
    };
    std::deque<Waiting> m_waiting;
};

}  // namespace zeb::fake
