#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/files/FileHandle.h"

/// What the system knows about paths. All functions are callable from any thread.
namespace zeb::files {

enum class Kind { regular, folder, symbolicLink, other };

/// What stands at `path` itself (a link is not followed); nothing when nothing does or it cannot be
/// seen.
std::optional<Kind> kindOf(const std::string& path);

/// Bytes of the regular file that `path` leads to; nothing when there is none or it cannot be seen.
std::optional<std::uint64_t> sizeOf(const std::string& path);

/// Tells one version of a file from the next: another file at its path, or other contents.
struct Version {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0;  ///< with `nanoseconds`: the time of the last change of its contents
    std::int64_t nanoseconds = 0;

    bool operator==(const Version&) const = default;
};

/// Of what `path` leads to; nothing when there is nothing or it cannot be seen.
std::optional<Version> versionOf(const std::string& path);

/// Whether both paths lead to the same file, through symbolic and hard links. False when either is missing.
bool isSameFile(const std::string& first, const std::string& second);

/// Removes a regular file or a symbolic link (never its target). Nothing there is not an error. A folder,
/// pipe, device or socket is never removed: throws `FileError` (folder: EISDIR, others: EINVAL), as it does
/// when the system refuses.
void removeFile(const std::string& path);

/// Gives the file `from` the name `to`, on the same file system, in one step; a file that stood there is
/// replaced. Throws `FileError`.
void moveFile(const std::string& from, const std::string& to);

/// Gives the file or link `from` the name `to`, on the same file system, unless something stands there:
/// returns false then. One step, except on file systems that cannot rename without replacing. Throws
/// `FileError`.
bool moveToFreePlace(const std::string& from, const std::string& to);

/// Returns which file stands at `path` itself (a link is not followed); nothing when nothing does or it
/// cannot be seen.
std::optional<FileIdentity> identityOf(const std::string& path);

/// Throws `FileError`, which names `path`, when the system would not let a file be made in `folder`.
void requireWritableFolder(const std::string& folder, const std::string& path);

/// Bytes that an unprivileged user may still write to the file system of the folder `folder`; nothing if
/// unknown.
std::optional<std::uint64_t> freeSpace(const std::string& folder);

}  // namespace zeb::files
