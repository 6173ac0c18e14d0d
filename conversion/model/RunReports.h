#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace zeb {

/// Collects the reports of a job for the main thread. At most one message is pending at a time; it delivers
/// all reports collected so far. Callable from any thread.
class RunReports {
public:
    /// Maximum number of log lines; older ones are dropped.
    static constexpr std::size_t maximumLines = 5000;

    struct Batch {
        std::deque<std::string> lines;  ///< since the last batch, oldest first
        double fraction = 0;            ///< the latest
    };

    /// Adds a line; without `fraction` the latest fraction stays. Returns true if a message must be posted to
    /// the main thread.
    bool add(const std::string& text, std::optional<double> fraction = {});
    /// Returns everything since the last call. Main thread only.
    Batch take();

private:
    std::mutex m_mutex;
    Batch m_batch;
    bool m_isOnItsWay = false;
};

}  // namespace zeb
