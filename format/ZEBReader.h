#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "codec/FrameDecoder.h"
#include "format/ZEBHeader.h"
#include "format/walk/FileCursor.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// The sound of a whole movie: unsigned 8-bit samples, channels interleaved, 128 is silence.
struct Soundtrack {
    std::vector<std::uint8_t> bytes;
    int sampleRate = 0;  ///< Hz, as the header says
    int audioChannels = 0;
};

/// Reads a ZEB file: header, frames in order or from any frame on, the soundtrack. Holds the header, one
/// frame record and a position, never more; of an index the first `mostEntriesKept` entries. Used by one
/// thread at a time; `readAllAudio` uses a handle of its own.
///
/// Create, `readHeader`, then `nextFrame` and `seekToFrame` in any order; `readAllAudio` at any time. Errors
/// of the frame path are `ZEBFormatError`, those of the soundtrack `ZEBReaderError` (and `ZEBFormatError` for
/// its header), those of the file `FileError`. After an error a seek recovers.
class ZEBReader {
public:
    using Open = std::function<std::unique_ptr<ReadableFile>()>;

    /// Entries of the index in the header that `readHeader` returns: three days. Later ones are read from the
    /// file when they are needed.
    static constexpr std::size_t mostEntriesKept = std::size_t{1} << 18;

    /// Opens nothing yet.
    explicit ZEBReader(const std::string& path);
    /// On whatever `open` gives; it is called for the frame path and again for the soundtrack.
    explicit ZEBReader(Open open);

    /// Opens the file and parses its header; later calls return what the first one found.
    const ZEBHeader& readHeader();

    /// The next frame. At the end of the movie: throws "EOF" once, then gives nothing; with `loop` starts
    /// again at frame 0. Nothing, too, for a record that cannot be decoded (`lastDecodeDebug` tells why; the
    /// first of a row is reported on standard output) and without an open file.
    std::optional<FrameImage> nextFrame(bool loop);

    /// Makes frame `k` the next one; below 0 it is the first, beyond the end the last. Through the index
    /// where it leads to a whole block (format/walk/BlockWalker.h), else by the lengths of the blocks before.
    /// Does nothing before the header has been read.
    void seekToFrame(std::int64_t k);

    /// The sound of all blocks. A movie that ends within a block's frames gives the sound up to there.
    Soundtrack readAllAudio();

    /// Closes the file. Also done on destruction.
    void close() noexcept { m_file.reset(); }

    /// How 16-bit pixels are read from the next frame on; `rgb565LE`, the encoder's own, unless set.
    void setMode32Interpretation(Mode32Interpretation value) noexcept {
        m_decoder.mode32Interpretation = value;
    }
    Mode32Interpretation mode32Interpretation() const noexcept { return m_decoder.mode32Interpretation; }
    /// One line about the last decoding of a frame.
    const std::string& lastDecodeDebug() const noexcept { return m_decoder.lastDecodeDebug(); }

private:
    FileCursor& openFile();
    std::uint32_t readWord();
    void skip(std::uint64_t count);
    void startBlock();

    Open m_open;
    std::optional<FileCursor> m_file;
    std::optional<LocatedHeader> m_located;
    FrameDecoder m_decoder;
    std::vector<std::uint8_t> m_record;
    int m_framesLeftInSecond = 0;
    bool m_reachedEOF = false;
    bool m_didPrintDecodeFailure = false;
};

}  // namespace zeb
