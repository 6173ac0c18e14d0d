#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "format/ZEBHeader.h"
#include "format/walk/BlockWalker.h"
#include "format/walk/FileCursor.h"

namespace zeb {

/// Goes through a movie second by second and tells where its sound and frame records lie, in damaged and
/// unfinished movies as far as that can be found out (`BlockWalker`). Used by one thread.
class SecondWalker {
public:
    struct Piece {
        std::uint64_t offset = 0;  ///< in the file
        std::uint32_t size = 0;    ///< bytes, all of which lay in the file
    };
    struct Second {
        std::int64_t number = 0;
        Piece sound;                ///< as far as it is there
        std::vector<Piece> frames;  ///< those that can be found, at most fps
        int frameCount = 0;         ///< that play: fps, but only the whole ones of a torn last second
        BlockWalker::State state = BlockWalker::State::whole;
    };

    /// Reads the header. Throws `ZEBFormatError` for a file that is no movie, `FileError`, as the other
    /// functions do.
    explicit SecondWalker(std::unique_ptr<ReadableFile> file);

    /// Without the index.
    const ZEBHeader& header() const noexcept { return m_located.header; }

    /// Makes `number` the next second.
    void seekTo(std::int64_t number) { m_blocks.seekTo(number); }
    /// The next second; nothing at the end.
    std::optional<Second> next();

    /// Reads a piece in place of `target`'s contents; false, and shorter, when the file was cut meanwhile.
    bool read(const Piece& piece, std::vector<std::uint8_t>& target);
    /// Reads a frame's record in place of `target`'s contents, which stays empty when that is no picture.
    void readFrame(const Piece& piece, std::vector<std::uint8_t>& target);

private:
    void collectParts(std::uint64_t start, std::uint64_t end, Second& second);

    std::unique_ptr<ReadableFile> m_file;
    LocatedHeader m_located;
    FileCursor m_cursor;
    BlockWalker m_blocks;
};

}  // namespace zeb
