#pragma once

#include <cerrno>
#include <cstdint>
#include <limits>

#include "platform/files/FileHandle.h"

namespace zeb::fake {

/// Counts the bytes that it takes and stores none. Writing beyond `room` fails like a full disk.
struct CountingFile final : WritableFile {
    explicit CountingFile(std::uint64_t bytes = std::numeric_limits<std::uint64_t>::max()) : room(bytes) {}

    void write(std::span<const std::span<const std::uint8_t>> pieces) override {
        for (const auto piece : pieces)
            position += piece.size();
        if (position > room) throw FileError("disk", ENOSPC);
    }
    void seek(std::uint64_t offset) override { position = offset; }
    std::uint64_t seekToEnd() override { return position; }
    void truncate(std::uint64_t) override {}
    void synchronise() override {}
    void startWriteback() noexcept override {}
    void close() override {}

    std::uint64_t room;
    std::uint64_t position = 0;
};

}  // namespace zeb::fake
