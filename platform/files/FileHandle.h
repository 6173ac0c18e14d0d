#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/base/Error.h"

namespace zeb {

/// A file operation that the system refused, or that is refused here. `code()` is the system's error number
/// (errno); description and text are "PATH: " followed by the reason: that of the error number unless another
/// is given. Domain "POSIX".
class FileError : public PlatformError {
public:
    FileError(const std::string& path, int errorNumber);
    FileError(const std::string& path, int errorNumber, const std::string& reason,
              const KeyedText& reasonText);

    const std::string& path() const noexcept { return m_path; }
    /// The reason alone, for callers that name the file themselves.
    const KeyedText& reasonText() const noexcept { return m_reasonText; }

private:
    std::string m_path;
    KeyedText m_reasonText;
};

/// Tells one file from every other one, whatever their names are.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// Where bytes go: a file opened for writing, or a stand-in of a test. Used by one thread at a time.
/// Every operation throws `FileError` on failure; interrupted calls and short writes are completed inside.
///
/// A write beyond the process's file-size limit raises SIGXFSZ, which ends the process unless it is ignored.
/// Programs ignore that signal at their start; such a write then fails with EFBIG like any other.
class WritableFile {
public:
    virtual ~WritableFile() = default;

    /// Moves the write position to `offset` bytes from the start.
    virtual void seek(std::uint64_t offset) = 0;
    /// Moves the write position to the end; returns it.
    virtual std::uint64_t seekToEnd() = 0;
    /// Writes all of these pieces, one behind the other, at the write position and advances it: in one call
    /// of the system, where it takes them all. On failure some of their bytes may have been written.
    virtual void write(std::span<const std::span<const std::uint8_t>> pieces) = 0;
    /// The same for one piece.
    void write(std::span<const std::uint8_t> bytes) { write(std::span(&bytes, 1)); }
    /// Cuts or extends the file to `size` bytes. The write position stays.
    virtual void truncate(std::uint64_t size) = 0;
    /// Returns which file it is; nothing for a stand-in that is no file.
    virtual std::optional<FileIdentity> identity() const { return std::nullopt; }
    /// Asks the system to start writing cached bytes to the disk without waiting, so that a later
    /// `synchronise` is short. A hint: does nothing where the system has no such call, and never fails.
    virtual void startWriteback() noexcept {}
    /// Returns once everything written is on the disk (a file system without that ability counts as done).
    virtual void synchronise() = 0;
    /// Closes the file. Further calls are not allowed. A file that is destroyed open is closed silently.
    virtual void close() = 0;
};

/// Where bytes come from. Used by one thread at a time.
class ReadableFile {
public:
    virtual ~ReadableFile() = default;

    /// Reads up to `buffer.size()` bytes at `offset`; returns how many arrived (fewer only at the end of the
    /// file). Throws `FileError`.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) = 0;
    /// Size in bytes as of now. Throws `FileError`.
    virtual std::uint64_t size() = 0;
};

/// Opens a regular file (or a link to one) for reading. A folder, pipe, socket or device throws `FileError`
/// at once (folder: EISDIR; others: EINVAL) without waiting for a writer.
std::unique_ptr<ReadableFile> openForReading(const std::string& path);

/// Creates a file that must not exist yet (a link that leads nowhere counts as existing) and opens it for
/// writing. Throws `FileError`.
std::unique_ptr<WritableFile> createForWriting(const std::string& path);
/// The same for a file whose errors name another one: the place that it is moved to later.
std::unique_ptr<WritableFile> createForWriting(const std::string& path, const std::string& nameInErrors);

/// Opens an existing regular file for writing at its start, keeping its bytes. Refuses what `openForReading`
/// refuses. Throws `FileError`.
std::unique_ptr<WritableFile> openForUpdating(const std::string& path);

}  // namespace zeb
