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
    int sampleRate = 0;  ///< Hz, from the header
    int audioChannels = 0;
};

/// Reads a ZEB file: header, frames in order or from any frame on, the soundtrack. Keeps only the header
/// (with the first `mostEntriesKept` entries of the index), one frame record and a position in memory. Used
/// by one thread at a time; `readAllAudio` opens the file separately.
///
/// Call `readHeader` first, then `nextFrame` and `seekToFrame` in any order; `readAllAudio` at any time.
/// `nextFrame` and `seekToFrame` throw `ZEBFormatError`, `readAllAudio` throws `ZEBReaderError` (and
/// `ZEBFormatError` for the header). File operations throw `FileError`. After an error a seek recovers.
class ZEBReader {
public:
    using Open = std::function<std::unique_ptr<ReadableFile>()>;

    /// Maximum number of index entries in the header that `readHeader` returns: three days. Later entries are
    /// read from the file when needed.
    static constexpr std::size_t mostEntriesKept = std::size_t{1} << 18;

    /// Does not open the file.
    explicit ZEBReader(const std::string& path);
    /// Reads the file that `open` returns. `open` is called once for header and frames and again for the
    /// soundtrack.
    explicit ZEBReader(Open open);

    /// Opens the file and parses its header; later calls return the first result.
    const ZEBHeader& readHeader();

    /// Returns the next frame. At the end of the movie it throws "EOF" once and returns nothing from then on;
    /// with `loop` it continues at frame 0. Returns nothing without an open file, and for a record that
    /// cannot be decoded: `lastDecodeDebug` has the reason, and the first of consecutive failures is printed
    /// to standard output.
    std::optional<FrameImage> nextFrame(bool loop);

    /// Makes frame `k` the next one: the first frame if `k` is negative, the last one if `k` is too large.
    /// Uses the index if its entry leads to a whole block (format/walk/BlockWalker.h), else the lengths of
    /// the blocks before. Does nothing before `readHeader`.
    void seekToFrame(std::int64_t k);

    /// Returns the sound of all blocks. If the file ends between two frames of a block, the sound of this
    /// block is the last one.
    Soundtrack readAllAudio();

    /// Closes the file. Also done on destruction.
    void close() noexcept { m_file.reset(); }

    /// Sets the layout of 16-bit pixels from the next frame on. The default is the encoder's `rgb565LE`.
    void setMode32Interpretation(Mode32Interpretation value) noexcept {
        m_decoder.mode32Interpretation = value;
    }
    Mode32Interpretation mode32Interpretation() const noexcept { return m_decoder.mode32Interpretation; }
    /// A diagnostic line about the last decoded frame.
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
