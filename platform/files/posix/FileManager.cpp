#include "platform/files/FileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace zeb::files {
namespace {

using StatusCall = int (*)(const char*, struct stat*);

/// Returns the status of `path` from `call` (stat or lstat); empty, with errno set, on failure.
std::optional<struct stat> statusOf(const std::string& path, StatusCall call) {
    // A zero byte would end the name early and return the status of another file.
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

bool moveToFreePlace(const std::string& from, const std::string& to) {
#if defined(RENAME_NOREPLACE)
    const int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#elif defined(RENAME_EXCL)
    const int result = ::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL);
#else
    const int result = -1;
    errno = ENOSYS;
#endif
    if (result == 0) return true;
    if (errno == EEXIST) return false;
    if (errno != ENOSYS && errno != EINVAL && errno != ENOTSUP) throw FileError(to, errno);
    // The file system has no such call. A hard link does not replace a file either.
    if (::link(from.c_str(), to.c_str()) == 0) {
        if (::unlink(from.c_str()) != 0) throw FileError(from, errno);
        return true;
    }
    if (errno == EEXIST || kindOf(to)) return false;
    moveFile(from, to);
    return true;
}

std::optional<FileIdentity> identityOf(const std::string& path) {
    const auto status = statusOf(path, ::lstat);
    if (!status) return std::nullopt;
    return FileIdentity{static_cast<std::uint64_t>(status->st_dev),
                        static_cast<std::uint64_t>(status->st_ino)};
}

void requireWritableFolder(const std::string& folder, const std::string& path) {
    if (::access(folder.c_str(), W_OK | X_OK) != 0) throw FileError(path, errno);
}

std::optional<std::uint64_t> freeSpace(const std::string& folder) {
    struct statvfs status {};
    if (::statvfs(folder.c_str(), &status) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

}  // namespace zeb::files
