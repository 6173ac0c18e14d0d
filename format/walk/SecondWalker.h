#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "format/ZEBHeader.h"
#include "format/walk/BlockWalker.h"
#include "format/walk/FileCursor.h"

namespace zeb {

/// Walks a movie second by second and returns the positions of sound and frame records, in damaged and
/// unfinished movies as far as they can be found (`BlockWalker`). Used by one thread.
class SecondWalker {
public:
    struct Piece {
        std::uint64_t offset = 0;  ///< in the file
        std::uint32_t size = 0;    ///< bytes, all within the file
    };
    struct Second {
        std::int64_t number = 0;
        Piece sound;                ///< cut at the end of the block or file
        std::vector<Piece> frames;  ///< the frames found, at most fps
        int frameCount = 0;  ///< number of frames to play: fps, or the whole frames of a torn last second
        BlockWalker::State state = BlockWalker::State::whole;
    };

    /// Reads the header. Throws `ZEBFormatError` if the file is not a movie. All functions throw `FileError`.
    explicit SecondWalker(std::unique_ptr<ReadableFile> file);

    /// Without the index.
    const ZEBHeader& header() const noexcept { return m_located.header; }

    /// Makes `number` the next second.
    void seekTo(std::int64_t number) { m_blocks.seekTo(number); }
    /// Returns the next second; nothing at the end.
    std::optional<Second> next();

    /// Replaces `target` by a piece. Returns false, with a shorter `target`, if the file was cut after
    /// `next`.
    bool read(const Piece& piece, std::vector<std::uint8_t>& target);
    /// Replaces `target` by a frame's record; leaves it empty if the record cannot be a picture.
    void readFrame(const Piece& piece, std::vector<std::uint8_t>& target);

private:
    void collectParts(std::uint64_t start, std::uint64_t end, Second& second);

    std::unique_ptr<ReadableFile> m_file;
    LocatedHeader m_located;
    FileCursor m_cursor;
    BlockWalker m_blocks;
};

}  // namespace zeb
