#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/base/Error.h"

namespace zeb {

/// A failed file operation. `code()` is the system's error number (errno). Description and text are "PATH: "
/// and a reason: the text of the error number unless another one is given. Domain "POSIX".
class FileError : public PlatformError {
public:
    FileError(const std::string& path, int errorNumber);
    FileError(const std::string& path, int errorNumber, const std::string& reason,
              const KeyedText& reasonText);

    const std::string& path() const noexcept { return m_path; }
    /// The reason without the path, for callers that add the file's name.
    const KeyedText& reasonText() const noexcept { return m_reasonText; }

private:
    std::string m_path;
    KeyedText m_reasonText;
};

/// Identifies a file independent of its names.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// Destination of bytes: a file opened for writing, or a replacement in a test. Used by one thread at a time.
/// Every operation throws `FileError` on failure. Interrupted calls and short writes are completed
/// internally.
///
/// A write beyond the process's file-size limit raises SIGXFSZ, which ends the process unless it is ignored.
/// Programs ignore that signal at their start; such a write then fails with EFBIG.
class WritableFile {
public:
    virtual ~WritableFile() = default;

    /// Moves the write position to `offset` bytes from the start.
    virtual void seek(std::uint64_t offset) = 0;
    /// Moves the write position to the end and returns it.
    virtual std::uint64_t seekToEnd() = 0;
    /// Writes all pieces, one after the other, at the write position and advances it. Uses one system call if
    /// the system accepts all pieces. On failure a part of the bytes may have been written.
    virtual void write(std::span<const std::span<const std::uint8_t>> pieces) = 0;
    /// Writes one piece.
    void write(std::span<const std::uint8_t> bytes) { write(std::span(&bytes, 1)); }
    /// Cuts or extends the file to `size` bytes. The write position does not change.
    virtual void truncate(std::uint64_t size) = 0;
    /// Returns the identity of the file; nothing for a replacement that is no file.
    virtual std::optional<FileIdentity> identity() const { return std::nullopt; }
    /// Starts writing cached bytes to the disk without waiting, so that a later `synchronise` is short. Best
    /// effort: does nothing on systems without such a call, and never fails.
    virtual void startWriteback() noexcept {}
    /// Returns when everything written is on the disk. Succeeds on file systems that do not support this.
    virtual void synchronise() = 0;
    /// Closes the file. No further calls are allowed. The destructor closes an open file and ignores errors.
    virtual void close() = 0;
};

/// Source of bytes. Used by one thread at a time.
class ReadableFile {
public:
    virtual ~ReadableFile() = default;

    /// Reads up to `buffer.size()` bytes at `offset`. Returns the number of bytes read, fewer only at the end
    /// of the file. Throws `FileError`.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) = 0;
    /// Returns the current size in bytes. Throws `FileError`.
    virtual std::uint64_t size() = 0;
};

/// Opens a regular file (or a link to one) for reading. Throws `FileError` for a folder (EISDIR), pipe,
/// socket or device (EINVAL), without waiting for a writer.
std::unique_ptr<ReadableFile> openForReading(const std::string& path);

/// Creates a file that must not exist (a broken link counts as existing) and opens it for writing. Throws
/// `FileError`.
std::unique_ptr<WritableFile> createForWriting(const std::string& path);
/// The same, but errors contain `nameInErrors`, the path that the file is moved to later.
std::unique_ptr<WritableFile> createForWriting(const std::string& path, const std::string& nameInErrors);

/// Opens an existing regular file for writing at its start, keeping its bytes. Rejects the same files as
/// `openForReading`. Throws `FileError`.
std::unique_ptr<WritableFile> openForUpdating(const std::string& path);

}  // namespace zeb
