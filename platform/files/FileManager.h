#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/files/FileHandle.h"

/// Functions on paths. All may be called from any thread.
namespace zeb::files {

enum class Kind { regular, folder, symbolicLink, other };

/// Returns the kind of the file at `path`, not following a link. Empty if there is none or access is denied.
std::optional<Kind> kindOf(const std::string& path);

/// Returns the size in bytes of the regular file at `path`, following links. Empty if there is none or access
/// is denied.
std::optional<std::uint64_t> sizeOf(const std::string& path);

/// Identifies a version of a file: it changes when the file is replaced or its contents are modified.
struct Version {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0;  ///< with `nanoseconds`: modification time of the contents
    std::int64_t nanoseconds = 0;

    bool operator==(const Version&) const = default;
};

/// Returns the version of the file at `path`, following links. Empty if there is none or access is denied.
std::optional<Version> versionOf(const std::string& path);

/// Returns true if both paths lead to the same file, through symbolic and hard links. False if either is
/// missing.
bool isSameFile(const std::string& first, const std::string& second);

/// Removes a regular file or a symbolic link (never its target). A missing file is not an error. Throws
/// `FileError` on failure, and for a folder (EISDIR), pipe, device or socket (EINVAL), which are not removed.
void removeFile(const std::string& path);

/// Renames the file `from` to `to` on the same file system, atomically; replaces an existing file. Throws
/// `FileError`.
void moveFile(const std::string& from, const std::string& to);

/// Renames the file or link `from` to `to` on the same file system; returns false if `to` exists. Atomic,
/// except on file systems that cannot rename without replacing. Throws `FileError`.
bool moveToFreePlace(const std::string& from, const std::string& to);

/// Returns the identity of the file at `path`, not following a link. Empty if there is none or access is
/// denied.
std::optional<FileIdentity> identityOf(const std::string& path);

/// Throws `FileError`, which contains `path`, if no file may be created in `folder`.
void requireWritableFolder(const std::string& folder, const std::string& path);

/// Returns the number of bytes that an unprivileged user can still write to the file system of `folder`;
/// empty if unknown.
std::optional<std::uint64_t> freeSpace(const std::string& folder);

}  // namespace zeb::files
