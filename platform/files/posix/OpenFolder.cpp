#include "platform/files/OpenFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>

namespace zeb {
namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() {
        if (m_number >= 0) ::close(m_number);
    }

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    int m_number;
};

Descriptor openFolder(int parent, const char* name) {
    return Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::optional<struct stat> statusOf(int folder, const std::string& name) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return status;
}

std::optional<std::vector<std::string>> namesIn(int folder) {
    // Open a separate descriptor: closing the stream closes it, and its position is not shared.
    const int descriptor = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return std::nullopt;
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(::fdopendir(descriptor));
    if (!stream) {
        ::close(descriptor);
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(stream.get());
        if (entry == nullptr) break;
        std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(std::move(name));
    }
    if (errno != 0) return std::nullopt;
    return names;
}

/// Returns true if a file system is mounted at an open folder.
bool isMountPoint(int folder, dev_t deviceAbove) {
    struct stat status {};
    if (::fstat(folder, &status) != 0 || status.st_dev != deviceAbove) return true;
#ifdef STATX_ATTR_MOUNT_ROOT
    // A folder of the same device may be mounted here, too.
    struct statx extended {};
    if (::statx(folder, "", AT_EMPTY_PATH, 0, &extended) == 0) {
        return (extended.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    }
#endif
    return false;
}

/// Removes a folder with its contents. Keeps only the current folder open, so that deep trees exhaust neither
/// descriptors nor the stack. Before it returns to the parent folder, it verifies the parent's identity.
class TreeRemoval {
public:
    TreeRemoval(int parent, dev_t device) : m_parent(parent), m_device(device) {}

    void run(const std::string& name) {
        if (!enter(m_parent, name)) return;
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.names.empty()) {
                if (!leave()) return;
                continue;
            }
            const std::string next = std::move(level.names.back());
            level.names.pop_back();
            const auto status = statusOf(m_current.number(), next);
            if (!status) continue;
            if (!S_ISDIR(status->st_mode)) {
                ::unlinkat(m_current.number(), next.c_str(), 0);
            } else if (!enter(m_current.number(), next)) {
                // The folder may be empty but unreadable.
                ::unlinkat(m_current.number(), next.c_str(), AT_REMOVEDIR);
            }
        }
    }

private:
    struct Level {
        std::string name;
        ino_t inode;
        std::vector<std::string> names;  ///< of the remaining entries
    };

    bool enter(int folder, const std::string& name) {
        Descriptor inside = openFolder(folder, name.c_str());
        if (!inside.isOpen() || isMountPoint(inside.number(), m_device)) return false;
        struct stat status {};
        auto names = namesIn(inside.number());
        if (!names || ::fstat(inside.number(), &status) != 0) return false;
        m_levels.push_back({name, status.st_ino, std::move(*names)});
        m_current = std::move(inside);
        return true;
    }

    /// Returns false if the parent folder is no longer the same.
    bool leave() {
        const Level left = std::move(m_levels.back());
        m_levels.pop_back();
        if (m_levels.empty()) return true;
        Descriptor above = openFolder(m_current.number(), "..");
        struct stat status {};
        if (!above.isOpen() || ::fstat(above.number(), &status) != 0 || status.st_dev != m_device ||
            status.st_ino != m_levels.back().inode) {
            return false;
        }
        m_current = std::move(above);
        ::unlinkat(m_current.number(), left.name.c_str(), AT_REMOVEDIR);
        return true;
    }

    const int m_parent;
    const dev_t m_device;
    Descriptor m_current{-1};
    std::vector<Level> m_levels;  ///< from the topmost folder to the current one
};

OpenFolder::Date dateOf(const timespec& time) {
    using namespace std::chrono;
    using Date = OpenFolder::Date;
    // File systems store dates beyond the range of nanosecond counts.
    constexpr std::int64_t latest = duration_cast<seconds>(Date::max().time_since_epoch()).count() - 1;
    constexpr std::int64_t earliest = duration_cast<seconds>(Date::min().time_since_epoch()).count() + 1;
    if (time.tv_sec > latest) return Date::max();
    if (time.tv_sec < earliest) return Date::min();
    return Date(duration_cast<Date::duration>(seconds(time.tv_sec) + nanoseconds(time.tv_nsec)));
}

}  // namespace

std::optional<OpenFolder> OpenFolder::open(const std::string& path) {
    // A slash at the end would follow a link, and a zero byte would name another file.
    if (path.empty() || path.back() == '/' || path.find('\0') != std::string::npos) return std::nullopt;
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return std::nullopt;
    return OpenFolder(descriptor);
}

OpenFolder::OpenFolder(OpenFolder&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

OpenFolder::~OpenFolder() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

std::optional<std::vector<std::string>> OpenFolder::names() const {
    return namesIn(m_descriptor);
}

std::optional<OpenFolder::Date> OpenFolder::modificationDate(const std::string& name) const {
    const auto status = statusOf(m_descriptor, name);
    if (!status) return std::nullopt;
#ifdef __APPLE__
    return dateOf(status->st_mtimespec);
#else
    return dateOf(status->st_mtim);
#endif
}

bool OpenFolder::remove(const std::string& name) const {
    const auto isNoEntry = [](const std::string& text) {
        return text.empty() || text == "." || text == ".." || text.find('/') != std::string::npos ||
               text.find('\0') != std::string::npos;
    };
    if (isNoEntry(name)) return false;
    const auto status = statusOf(m_descriptor, name);
    if (!status) return errno == ENOENT;
    if (!S_ISDIR(status->st_mode)) return ::unlinkat(m_descriptor, name.c_str(), 0) == 0;
    struct stat own {};
    if (::fstat(m_descriptor, &own) != 0) return false;
    TreeRemoval(m_descriptor, own.st_dev).run(name);
    return ::unlinkat(m_descriptor, name.c_str(), AT_REMOVEDIR) == 0;
}

}  // namespace zeb
