#include "platform/FileManager.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace zeb::files {
namespace {

using StatusCall = int (*)(const char*, struct stat*);

/// The status of `path` by `call` (stat or lstat); nothing, and errno set, when there is none to be had.
std::optional<struct stat> statusOf(const std::string& path, StatusCall call) {
    // A zero byte would end the name early and ask about some other file.
    if (path.find('\0') != std::string::npos) {
        errno = EINVAL;
        return std::nullopt;
    }
    struct stat status {};
    if (call(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

Kind kindFrom(mode_t mode) {
    if (S_ISREG(mode)) return Kind::regular;
    if (S_ISDIR(mode)) return Kind::folder;
    if (S_ISLNK(mode)) return Kind::symbolicLink;
    return Kind::other;
}

bool meansNothingThere(int errorNumber) {
    return errorNumber == ENOENT || errorNumber == ENOTDIR;
}

}  // namespace

std::optional<Kind> kindOf(const std::string& path) {
    const auto status = statusOf(path, ::lstat);
    if (!status) return std::nullopt;
    return kindFrom(status->st_mode);
}

std::optional<std::uint64_t> sizeOf(const std::string& path) {
    const auto status = statusOf(path, ::stat);
    if (!status || !S_ISREG(status->st_mode)) return std::nullopt;
    return static_cast<std::uint64_t>(status->st_size);
}

std::optional<Version> versionOf(const std::string& path) {
    const auto status = statusOf(path, ::stat);
    if (!status) return std::nullopt;
#ifdef __APPLE__
    const timespec& changed = status->st_mtimespec;
#else
    const timespec& changed = status->st_mtim;
#endif
    return Version{status->st_dev, status->st_ino, status->st_size, changed.tv_sec, changed.tv_nsec};
}

bool isSameFile(const std::string& first, const std::string& second) {
    const auto one = statusOf(first, ::stat);
    const auto other = statusOf(second, ::stat);
    return one && other && one->st_dev == other->st_dev && one->st_ino == other->st_ino;
}

void removeFile(const std::string& path) {
    const auto status = statusOf(path, ::lstat);
    if (!status) {
        if (meansNothingThere(errno)) return;
        throw FileError(path, errno);
    }
    const Kind kind = kindFrom(status->st_mode);
    if (kind == Kind::folder) throw FileError(path, EISDIR);
    if (kind == Kind::other) throw FileError(path, EINVAL);
    if (::unlink(path.c_str()) != 0 && !meansNothingThere(errno)) throw FileError(path, errno);
}

void moveFile(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) throw FileError(to, errno);
}

std::uint64_t spaceFreedByRemoving(const std::string& path) {
    const auto status = statusOf(path, ::lstat);
    if (!status || !S_ISREG(status->st_mode) || status->st_nlink != 1) return 0;
    constexpr std::uint64_t block = 512;  // the unit of st_blocks, whatever the file system's own
    return static_cast<std::uint64_t>(status->st_blocks) * block;
}

std::optional<std::uint64_t> freeSpace(const std::string& folder) {
    struct statvfs status {};
    if (::statvfs(folder.c_str(), &status) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

}  // namespace zeb::files
