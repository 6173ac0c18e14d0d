#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zeb {

/// Tells when files appear, are replaced, written or go away, by whatever process. It watches their folders,
/// because a watch on a file is lost when the file is replaced.
///
/// On Linux only: elsewhere `isComplete` is always false and nothing is ever told.
class FolderWatch {
public:
    struct Place {
        std::string folder;
        std::string name;  ///< of the file in it

        bool operator==(const Place&) const = default;
    };
    /// Called on a thread of the watch, once or more often for one change, also for our own changes. Must not
    /// destroy the watch.
    using Handler = std::function<void()>;

    /// Folders that do not exist are left out.
    FolderWatch(std::vector<Place> places, Handler handler);
    /// Returns when the handler has ended.
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    const std::vector<Place>& places() const noexcept { return m_places; }
    /// Whether every place is watched: false once a folder was missing, moved or removed.
    bool isComplete() const noexcept;

private:
    class Watcher;

    std::vector<Place> m_places;
    std::unique_ptr<Watcher> m_watcher;
};

}  // namespace zeb
