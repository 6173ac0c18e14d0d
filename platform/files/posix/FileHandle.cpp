#include "platform/files/FileHandle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "platform/text/SystemErrorText.h"

namespace zeb {
namespace {

constexpr std::uint64_t largestOffset = std::numeric_limits<off_t>::max();
/// Limit for one transfer: some systems reject 2 GiB and more.
constexpr std::size_t largestTransfer = std::size_t{1} << 30;
/// Number of pieces that every system accepts in one call.
constexpr std::size_t mostPieces = 1024;

/// Owns an open file and keeps its path for error texts.
class Descriptor {
public:
    Descriptor(int number, std::string path) : m_number(number), m_path(std::move(path)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0) ::close(m_number);
    }

    int number() const { return m_number; }

    [[noreturn]] void fail(int errorNumber = errno) const { throw FileError(m_path, errorNumber); }

    struct stat status() const {
        struct stat status {};
        if (::fstat(m_number, &status) != 0) fail();
        return status;
    }

    void close() {
        const int number = std::exchange(m_number, -1);
        // An interrupted close has closed the descriptor: closing again could close another thread's file.
        if (::close(number) != 0 && errno != EINTR) fail();
    }

private:
    int m_number;
    std::string m_path;
};

void requireRegular(const struct stat& status, const std::string& path) {
    if (S_ISDIR(status.st_mode)) throw FileError(path, EISDIR);
    if (!S_ISREG(status.st_mode)) {
        throw FileError(path, EINVAL, "Not an ordinary file", {"error_not_ordinary_file"});
    }
}

int openDescriptor(const std::string& path, int flags) {
    // A zero byte would end the name early and open another file.
    if (path.find('\0') != std::string::npos) throw FileError(path, EINVAL);
    int number = -1;
    do {
        number = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, 0666);
    } while (number < 0 && errno == EINTR);
    if (number < 0) throw FileError(path, errno);
    return number;
}

/// Opens an existing regular file. Checks before opening, because opening a device may have side effects, and
/// again afterwards, because the file may have been replaced. O_NONBLOCK avoids waiting for a pipe's writer.
std::unique_ptr<Descriptor> openRegular(const std::string& path, int flags) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) requireRegular(status, path);
    auto descriptor = std::make_unique<Descriptor>(openDescriptor(path, flags | O_NONBLOCK), path);
    requireRegular(descriptor->status(), path);
    return descriptor;
}

class PosixReadableFile final : public ReadableFile {
public:
    explicit PosixReadableFile(std::unique_ptr<Descriptor> descriptor)
        : m_descriptor(std::move(descriptor)) {}

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        std::size_t done = 0;
        while (done < buffer.size() && offset + done <= largestOffset) {
            const std::size_t wanted = std::min(buffer.size() - done, largestTransfer);
            const ssize_t count = ::pread(m_descriptor->number(), buffer.data() + done, wanted,
                                          static_cast<off_t>(offset + done));
            if (count == 0) break;
            if (count > 0) {
                done += static_cast<std::size_t>(count);
            } else if (errno != EINTR) {
                m_descriptor->fail();
            }
        }
        return done;
    }

    std::uint64_t size() override { return static_cast<std::uint64_t>(m_descriptor->status().st_size); }

private:
    std::unique_ptr<Descriptor> m_descriptor;
};

/// Returns how many of the pieces, from the first on, one call can write.
int piecesOfOneTransfer(std::span<const iovec> pieces) {
    std::size_t count = 1;
    std::size_t bytes = pieces.front().iov_len;
    while (count < std::min(pieces.size(), mostPieces) && bytes + pieces[count].iov_len <= largestTransfer)
        bytes += pieces[count++].iov_len;
    return static_cast<int>(count);
}

/// Removes the first `bytes` from the pieces.
std::span<iovec> piecesBehind(std::span<iovec> pieces, std::size_t bytes) {
    while (!pieces.empty() && bytes >= pieces.front().iov_len) {
        bytes -= pieces.front().iov_len;
        pieces = pieces.subspan(1);
    }
    if (bytes > 0) {
        iovec& piece = pieces.front();
        piece = {static_cast<std::uint8_t*>(piece.iov_base) + bytes, piece.iov_len - bytes};
    }
    return pieces;
}

/// Stores the write position and writes at explicit offsets, so that a seek costs no system call.
class PosixWritableFile final : public WritableFile {
public:
    explicit PosixWritableFile(std::unique_ptr<Descriptor> descriptor)
        : m_descriptor(std::move(descriptor)) {}

    void seek(std::uint64_t offset) override {
        if (offset > largestOffset) m_descriptor->fail(EINVAL);
        m_position = offset;
    }

    std::uint64_t seekToEnd() override {
        m_position = static_cast<std::uint64_t>(m_descriptor->status().st_size);
        return m_position;
    }

    void write(std::span<const std::span<const std::uint8_t>> pieces) override {
        m_pieces.clear();
        for (auto bytes : pieces) {
            while (!bytes.empty()) {
                const auto piece = bytes.first(std::min(bytes.size(), largestTransfer));
                // `iovec` is also used for reading; writing does not change the bytes.
                m_pieces.push_back({const_cast<std::uint8_t*>(piece.data()), piece.size()});
                bytes = bytes.subspan(piece.size());
            }
        }
        const std::uint64_t begin = m_position;
        for (std::span<iovec> left = m_pieces; !left.empty();) {
            const ssize_t count = ::pwritev(m_descriptor->number(), left.data(), piecesOfOneTransfer(left),
                                            static_cast<off_t>(m_position));
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) m_descriptor->fail();
            if (count == 0) m_descriptor->fail(EIO);
            m_position += static_cast<std::uint64_t>(count);
            left = piecesBehind(left, static_cast<std::size_t>(count));
        }
        m_unsentBegin = std::min(m_unsentBegin, begin);
        m_unsentEnd = std::max(m_unsentEnd, m_position);
    }

    void truncate(std::uint64_t size) override {
        if (size > largestOffset) m_descriptor->fail(EINVAL);
        while (::ftruncate(m_descriptor->number(), static_cast<off_t>(size)) != 0) {
            if (errno != EINTR) m_descriptor->fail();
        }
    }

    std::optional<FileIdentity> identity() const override {
        const struct stat status = m_descriptor->status();
        return FileIdentity{static_cast<std::uint64_t>(status.st_dev),
                            static_cast<std::uint64_t>(status.st_ino)};
    }

    void startWriteback() noexcept override {
        if (m_unsentBegin >= m_unsentEnd) return;
#ifdef SYNC_FILE_RANGE_WRITE
        // An error is harmless: `synchronise` writes the data.
        (void)::sync_file_range(m_descriptor->number(), static_cast<off_t>(m_unsentBegin),
                                static_cast<off_t>(m_unsentEnd - m_unsentBegin), SYNC_FILE_RANGE_WRITE);
#endif
        m_unsentBegin = largestOffset;
        m_unsentEnd = 0;
    }

    void synchronise() override {
        while (::fsync(m_descriptor->number()) != 0) {
            if (errno == EINTR) continue;
            if (errno == EINVAL || errno == EROFS || errno == ENOTSUP) return;
            m_descriptor->fail();
        }
    }

    void close() override {
        m_descriptor->close();
    }

private:
    std::unique_ptr<Descriptor> m_descriptor;
    std::uint64_t m_position = 0;
    std::vector<iovec> m_pieces;  ///< of the current write
    // Range written since the last `startWriteback`; empty unless begin is before end.
    std::uint64_t m_unsentBegin = largestOffset;
    std::uint64_t m_unsentEnd = 0;
};

}  // namespace

FileError::FileError(const std::string& path, int errorNumber)
    : FileError(path, errorNumber, systemErrorDescription(errorNumber), systemErrorText(errorNumber)) {}

FileError::FileError(const std::string& path, int errorNumber, const std::string& reason,
                     const KeyedText& reasonText)
    : PlatformError("POSIX", errorNumber, path + ": " + reason, {"error_file_format", {path, reasonText}}),
      m_path(path),
      m_reasonText(reasonText) {}

std::unique_ptr<ReadableFile> openForReading(const std::string& path) {
    return std::make_unique<PosixReadableFile>(openRegular(path, O_RDONLY));
}

std::unique_ptr<WritableFile> createForWriting(const std::string& path) {
    return createForWriting(path, path);
}

std::unique_ptr<WritableFile> createForWriting(const std::string& path, const std::string& nameInErrors) {
    try {
        const int number = openDescriptor(path, O_WRONLY | O_CREAT | O_EXCL);
        return std::make_unique<PosixWritableFile>(std::make_unique<Descriptor>(number, nameInErrors));
    } catch (const FileError& error) {
        throw FileError(nameInErrors, error.code());
    }
}

std::unique_ptr<WritableFile> openForUpdating(const std::string& path) {
    return std::make_unique<PosixWritableFile>(openRegular(path, O_WRONLY));
}

}  // namespace zeb
