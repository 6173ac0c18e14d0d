#include "platform/settings/posix/PropertyListFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files/FileHandle.h"
#include "platform/files/FileManager.h"
#include "platform/settings/PropertyList.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;

class Descriptor {
public:
    Descriptor(const std::string& path, int flags) : m_number(::open(path.c_str(), flags | O_CLOEXEC, 0600)) {
        if (m_number < 0) throw FileError(path, errno);
    }
    ~Descriptor() { ::close(m_number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }

private:
    int m_number;
};

/// Excludes other processes during its lifetime.
///
/// The lock file is never removed: otherwise two processes could hold locks on two files of the same name.
class Lock {
public:
    explicit Lock(const std::string& path) : m_file(path, O_RDWR | O_CREAT | O_NOFOLLOW) {
        using namespace std::chrono_literals;
        // A process holds the lock for one write. The timeout covers a process that was stopped while holding
        // it.
        const auto deadline = std::chrono::steady_clock::now() + 2s;
        while (::flock(m_file.number(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == ENOLCK || errno == ENOTSUP || errno == EINVAL || errno == ENOSYS) {
                m_isHeld = false;
                return;
            }
            if (errno != EINTR && errno != EWOULDBLOCK) throw FileError(path, errno);
            if (std::chrono::steady_clock::now() >= deadline) throw FileError(path, EWOULDBLOCK);
            std::this_thread::sleep_for(1ms);
        }
    }

    /// Returns false on file systems without locks.
    bool isHeld() const { return m_isHeld; }

private:
    Descriptor m_file;
    bool m_isHeld = true;
};

std::string folderOf(const std::string& path) {
    const std::string folder = fs::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return;
    const std::string parent = folderOf(folder);
    if (parent != folder && parent != ".") makeFolder(parent);
    // Settings are private to their owner.
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) throw FileError(folder, errno);
}

void synchroniseFolder(const std::string& folder) {
    const Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
    // Not every file system supports this for folders; ignore failures.
    while (::fsync(descriptor.number()) != 0 && errno == EINTR) {
    }
}

}  // namespace

PropertyListFile::PropertyListFile(std::string path, Warn warn)
    : m_path(std::move(path)), m_warn(std::move(warn)) {}

std::string PropertyListFile::target() const {
    fs::path place = m_path;
    std::error_code error;
    // The maximum number of links that the system follows.
    for (int links = 0; links < 40 && fs::is_symlink(place, error); ++links) {
        const fs::path next = fs::read_symlink(place, error);
        if (error) break;
        place = place.parent_path() / next;
    }
    return place.string();
}

PropertyListFile::Contents PropertyListFile::contentsOf(const std::string& path) {
    std::unique_ptr<ReadableFile> file;
    try {
        file = openForReading(path);
    } catch (const FileError& error) {
        if (error.code() == ENOENT || error.code() == ENOTDIR) return {PropertyListTree(), {}};
        throw;
    }
    const std::uint64_t size = file->size();
    if (size > propertyList::largestSize) return {std::nullopt, "too large"};
    PropertyData bytes(static_cast<std::size_t>(size));
    bytes.resize(file->readAt(0, bytes));
    if (bytes.empty()) return {};
    try {
        auto tree = PropertyListTree::parse(bytes);
        if (!tree.isDictionary()) return {std::nullopt, "not a dictionary"};
        return {std::move(tree), {}};
    } catch (const PropertyListError& error) {
        return {std::nullopt, error.what()};
    }
}

std::optional<PropertyListTree> PropertyListFile::read() const {
    return contentsOf(target()).tree;
}

void PropertyListFile::prepare() {
    try {
        makeFolder(folderOf(m_path));
    } catch (const FileError&) {
        // Reading does not need the folder, and `update` tries again.
    }
    if (contentsOf(target()).damage.empty()) return;
    const Lock lock(m_path + ".lock");
    // Another process may have repaired or renamed the file while we waited for the lock.
    const std::string place = target();
    const Contents contents = contentsOf(place);
    if (!contents.damage.empty()) setAside(place, contents.damage);
}

void PropertyListFile::setAside(const std::string& path, const std::string& damage) {
    for (int i = 1;; ++i) {
        const std::string name = path + ".damaged" + (i == 1 ? "" : "-" + std::to_string(i));
        // Link before unlinking: a rename would replace an existing file.
        if (::link(path.c_str(), name.c_str()) == 0) {
            if (::unlink(path.c_str()) != 0) throw FileError(path, errno);
        } else if (errno == EEXIST) {
            continue;
        } else {
            // File systems without hard links.
            if (files::kindOf(name)) continue;
            files::moveFile(path, name);
        }
        m_warn(path + " cannot be read (" + damage + ") and was set aside as " + name);
        return;
    }
}

PropertyListTree PropertyListFile::update(const PropertyListTree& last,
                                          const std::function<void(PropertyListTree&)>& edit) {
    makeFolder(folderOf(m_path));
    const Lock lock(m_path + ".lock");
    const std::string place = target();
    Contents contents = contentsOf(place);
    PropertyListTree tree = contents.tree ? *std::move(contents.tree) : last;
    edit(tree);
    const PropertyData bytes = tree.bytes();
    if (!contents.damage.empty()) setAside(place, contents.damage);
    makeFolder(folderOf(place));
    // With the lock held, an existing temporary file belongs to a killed process and may be removed.
    replace(place, lock.isHeld() ? ".new" : ".new-" + std::to_string(::getpid()), bytes);
    return tree;
}

void PropertyListFile::replace(const std::string& path, const std::string& suffix,
                               const PropertyData& bytes) {
    const std::string temporary = path + suffix;
    files::removeFile(temporary);
    try {
        struct stat status {};
        const bool isThere = ::stat(path.c_str(), &status) == 0;
        if (isThere && ::access(path.c_str(), W_OK) != 0) throw FileError(path, errno);
        const auto file = createForWriting(temporary, path);
        const mode_t mode = isThere ? status.st_mode & 07777 : mode_t{0600};
        if (::chmod(temporary.c_str(), mode) != 0) throw FileError(path, errno);
        file->write(bytes);
        file->synchronise();
        file->close();
        files::moveFile(temporary, path);
    } catch (const FileError&) {
        ::unlink(temporary.c_str());
        throw;
    }
    synchroniseFolder(folderOf(path));
}

}  // namespace zeb
