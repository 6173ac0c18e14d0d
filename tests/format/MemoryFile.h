#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "format/check/MovieFacts.h"
#include "format/check/PartialFile.h"
#include "platform/files/FileHandle.h"

namespace zeb::test {

/// A file in memory whose calls can be made to fail. Must outlive its handles.
struct MemoryDisk {
    struct Call {
        enum class Kind { write, truncate, synchronise } kind;
        std::uint64_t offset = 0;  ///< of a write; for a truncation the new size
        std::vector<std::uint8_t> bytes;

        void applyTo(std::vector<std::uint8_t>& file) const {
            if (kind == Kind::truncate) file.resize(offset);
            if (kind != Kind::write) return;
            file.resize(std::max<std::size_t>(file.size(), offset + bytes.size()));
            std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(offset));
        }
    };

    std::vector<std::uint8_t> bytes;
    std::vector<Call> journal;  ///< successful calls that change the file
    int calls = 0;
    int failFrom = 0;  ///< number of the first failing call, from 1; 0 = no call fails
    int failTo = 0;    ///< number of the last failing call

    /// Counts a call. Returns true if it must fail.
    bool countCall() { return ++calls >= failFrom && calls <= failTo; }
    void mayFail() {
        if (countCall()) fail();
    }
    /// Throws a `FileError` whose path is the number of the call.
    [[noreturn]] void fail() const { throw FileError(std::to_string(calls), ENOSPC); }
};

class MemoryWritableFile : public WritableFile {
public:
    explicit MemoryWritableFile(MemoryDisk& disk) : m_disk(disk) {}

    void seek(std::uint64_t offset) override {
        m_disk.mayFail();
        m_position = offset;
    }
    std::uint64_t seekToEnd() override {
        m_disk.mayFail();
        return m_position = m_disk.bytes.size();
    }
    /// A failing write stores half of its bytes, like a full disk.
    using WritableFile::write;
    void write(std::span<const std::span<const std::uint8_t>> pieces) override {
        const bool fails = m_disk.countCall();
        std::vector<std::uint8_t> bytes;
        for (const auto piece : pieces)
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        if (fails) bytes.resize(bytes.size() / 2);
        apply({MemoryDisk::Call::Kind::write, m_position, bytes});
        m_position += bytes.size();
        if (fails) m_disk.fail();
    }
    void truncate(std::uint64_t size) override {
        m_disk.mayFail();
        apply({MemoryDisk::Call::Kind::truncate, size, {}});
    }
    void synchronise() override {
        m_disk.mayFail();
        apply({MemoryDisk::Call::Kind::synchronise, 0, {}});
    }
    void close() override { m_disk.mayFail(); }

private:
    void apply(MemoryDisk::Call call) {
        call.applyTo(m_disk.bytes);
        m_disk.journal.push_back(std::move(call));
    }

    MemoryDisk& m_disk;
    std::uint64_t m_position = 0;
};

class MemoryReadableFile : public ReadableFile {
public:
    /// `before` is called before each access. It may change the file or throw.
    explicit MemoryReadableFile(
        const std::vector<std::uint8_t>& bytes, std::function<void()> before = [] {})
        : m_bytes(bytes), m_before(std::move(before)) {}

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        m_before();
        if (offset >= m_bytes.size()) return 0;
        const std::size_t count = std::min<std::size_t>(buffer.size(), m_bytes.size() - offset);
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
        return count;
    }
    std::uint64_t size() override {
        m_before();
        return m_bytes.size();
    }

private:
    const std::vector<std::uint8_t>& m_bytes;
    std::function<void()> m_before;
};

inline std::int64_t finish(MemoryDisk& disk) {
    MemoryReadableFile source(disk.bytes);
    MemoryWritableFile target(disk);
    return finishPartialFile(source, target);
}

/// Calls `PartialFile::copyWholeSeconds` with an empty disk as the target.
inline void copyWholeSeconds(const std::vector<std::uint8_t>& bytes, MemoryDisk& disk) {
    MemoryReadableFile source(bytes);
    MemoryWritableFile target(disk);
    PartialFile(source).copyWholeSeconds(target);
}

/// The error of `action` as "domain code text". Empty if it succeeds.
template <typename Action>
std::string failure(Action action) {
    try {
        action();
    } catch (const PlatformError& error) {
        return error.domain() + " " + std::to_string(error.code()) + " " + error.what();
    }
    return {};
}

inline MovieFacts factsOf(const std::vector<std::uint8_t>& bytes) {
    MemoryReadableFile file(bytes);
    return readMovieFacts(file);
}

}  // namespace zeb::test
