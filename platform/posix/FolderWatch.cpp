#include "platform/FolderWatch.h"

#ifdef __linux__
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <thread>
#include <utility>

namespace zeb {

#ifdef __linux__

class FolderWatch::Watcher {
public:
    Watcher(const std::vector<Place>& places, Handler handler)
        : m_handler(std::move(handler)),
          m_events(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
          m_end(::eventfd(0, EFD_CLOEXEC)) {
        if (m_events < 0 || m_end < 0) return;
        m_isComplete = true;
        for (const Place& place : places)
            add(place);
        m_thread = std::thread([this] { run(); });
    }
    ~Watcher() {
        if (m_thread.joinable()) {
            const std::uint64_t one = 1;
            // Fails only when the counter is full, and then the thread is awake already.
            [[maybe_unused]] const auto written = ::write(m_end, &one, sizeof one);
            m_thread.join();
        }
        if (m_events >= 0) ::close(m_events);
        if (m_end >= 0) ::close(m_end);
    }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    bool isComplete() const noexcept { return m_isComplete; }

private:
    /// A file's new contents are there when it is moved here or closed; a bare creation only tells of a link.
    static constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE |
                                             IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

    void add(const Place& place) {
        const int watch = ::inotify_add_watch(m_events, place.folder.c_str(), changes);
        if (watch < 0) m_isComplete = false;
        if (watch >= 0) m_names.emplace(watch, place.name);
    }

    void run() {
        std::array<pollfd, 2> sources = {{{m_events, POLLIN, 0}, {m_end, POLLIN, 0}}};
        while (true) {
            if (::poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) return;
            if (sources[1].revents != 0) return;
            if (sources[0].revents != 0 && readEvents()) m_handler();
        }
    }

    /// Takes what has gathered; whether it concerns a place.
    bool readEvents() {
        bool doesConcern = false;
        std::array<char, 4096> buffer{};
        ssize_t size = 0;
        while ((size = ::read(m_events, buffer.data(), buffer.size())) > 0) {
            for (std::size_t i = 0; i + sizeof(inotify_event) <= static_cast<std::size_t>(size);) {
                inotify_event event{};
                std::memcpy(&event, buffer.data() + i, sizeof event);
                const std::size_t nameBegin = i + sizeof event;
                const std::string_view padded(buffer.data() + nameBegin, event.len);
                doesConcern |= concerns(event, padded.substr(0, padded.find('\0')));
                i = nameBegin + event.len;
            }
        }
        return doesConcern;
    }

    bool concerns(const inotify_event& event, std::string_view name) {
        if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
            m_isComplete = false;
            return true;
        }
        if ((event.mask & IN_Q_OVERFLOW) != 0) return true;
        const auto [first, last] = m_names.equal_range(event.wd);
        return std::any_of(first, last, [&](const auto& watched) { return watched.second == name; });
    }

    Handler m_handler;
    int m_events;
    int m_end;
    std::multimap<int, std::string> m_names;  ///< by the number of the folder's watch
    std::atomic<bool> m_isComplete = false;
    std::thread m_thread;
};

#else

class FolderWatch::Watcher {
public:
    Watcher(const std::vector<Place>&, const Handler&) {}
    bool isComplete() const noexcept { return false; }
};

#endif

FolderWatch::FolderWatch(std::vector<Place> places, Handler handler)
    : m_places(std::move(places)), m_watcher(std::make_unique<Watcher>(m_places, std::move(handler))) {}

FolderWatch::~FolderWatch() = default;

bool FolderWatch::isComplete() const noexcept {
    return m_watcher->isComplete();
}

}  // namespace zeb
