#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace zeb {

/// What a job reports, on its way to the main thread: however often a job reports, one message is on its way
/// at a time and takes along all that has come together. Callable from any thread.
class RunReports {
public:
    /// A log shows no more lines than this; older ones are not kept here either.
    static constexpr std::size_t maximumLines = 5000;

    struct Batch {
        std::deque<std::string> lines;  ///< since the last batch, oldest first
        double fraction = 0;            ///< the newest
    };

    /// Adds a line; without `fraction` the newest one stays. True when the main thread has to be told.
    bool add(const std::string& text, std::optional<double> fraction = {});
    /// On the main thread: everything since the last time.
    Batch take();

private:
    std::mutex m_mutex;
    Batch m_batch;
    bool m_isOnItsWay = false;
};

}  // namespace zeb
