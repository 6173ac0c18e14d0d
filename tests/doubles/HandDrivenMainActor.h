#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "platform/tasks/MainActor.h"

namespace zeb::fake {

/// A main thread that a test drives by hand: `run` runs posted work, `pass` also runs delayed work.
class HandDrivenMainActor final : public MainActor {
public:
    void post(Work work) override {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    void postAfter(std::chrono::nanoseconds delay, Work work) override {
        const std::lock_guard lock(m_mutex);
        m_delayed.emplace(m_time + std::max(delay, std::chrono::nanoseconds{}), std::move(work));
    }

    /// Runs posted work, including work that it posts, until none is left. Returns the number of work items.
    std::size_t run() {
        std::size_t count = 0;
        while (Work work = next()) {
            work();
            ++count;
        }
        return count;
    }

    /// Advances the time. Runs posted work, and delayed work when its time has come, in order.
    void pass(std::chrono::nanoseconds time) {
        const auto end = now() + time;
        run();
        while (Work work = nextDelayed(end)) {
            work();
            run();
        }
    }

    std::chrono::nanoseconds now() const {
        const std::lock_guard lock(m_mutex);
        return m_time;
    }
    std::size_t waiting() const {
        const std::lock_guard lock(m_mutex);
        return m_waiting.size();
    }

private:
    Work next() {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.empty()) return {};
        Work work = std::move(m_waiting.front());
        m_waiting.pop_front();
        return work;
    }
    Work nextDelayed(std::chrono::nanoseconds end) {
        const std::lock_guard lock(m_mutex);
        const auto first = m_delayed.begin();
        if (first == m_delayed.end() || first->first > end) {
            m_time = end;
            return {};
        }
        m_time = first->first;
        Work work = std::move(first->second);
        m_delayed.erase(first);
        return work;
    }

    mutable std::mutex m_mutex;
    std::deque<Work> m_waiting;
    std::multimap<std::chrono::nanoseconds, Work> m_delayed;  ///< by due time
    std::chrono::nanoseconds m_time{};
};

}  // namespace zeb::fake
