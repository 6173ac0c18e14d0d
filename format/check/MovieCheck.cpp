#include "format/check/MovieCheck.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

#include "codec/FrameDecoder.h"
#include "codec/SpriteLayout.h"
#include "format/BigEndian.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"
#include "format/walk/FileCursor.h"
#include "format/walk/FrameRecord.h"

namespace zeb {
namespace {

using Open = std::function<std::unique_ptr<ReadableFile>()>;
using Fault = std::optional<MovieFault>;

constexpr std::array screenModes = {4, 32};
constexpr int mostChannels = 2;

template <typename Number>
std::string text(Number number) {
    return std::to_string(number);
}

/// Returns the text of a fault for a header that cannot be read.
std::string headerFault(const ZEBFormatError& error) {
    const std::string& key = error.text().key;
    if (key == ZEBFormatError::titleOutsideHeader().text().key)
        return "the title passes the end of the header";
    if (key == ZEBFormatError::headerTooShort().text().key) return "the header is too short";
    return "the file ends within the header";
}

class Checker {
public:
    Checker(const Open& open, const LocatedHeader& located, const std::function<bool()>& isCancelled)
        : m_file(open()),
          m_blocks(open()),
          m_index(open()),
          m_fileSize(m_file->size()),
          m_header(located.header),
          m_places(located.places),
          m_isCancelled(isCancelled) {
        m_blocks.seek(m_places.data);
        m_index.seek(m_places.frameIndex);
    }

    Fault check();
    std::int64_t seconds() const { return m_seconds; }
    bool wasCancelled() const { return m_wasCancelled; }

private:
    Fault checkFields();
    Fault checkIndexEntry();
    Fault checkBlock();
    Fault checkPart(std::uint64_t blockEnd, const std::string& name, std::uint32_t& size);
    Fault checkFrame(std::uint64_t blockEnd, const std::string& name);
    Fault checkRecord(std::uint64_t offset, const std::string& name);
    Fault checkTotals();
    std::string inSecond() const { return " of second " + text(m_seconds); }

    std::unique_ptr<ReadableFile> m_file;
    FileCursor m_blocks;
    FileCursor m_index;
    std::uint64_t m_fileSize;
    const ZEBHeader& m_header;
    const HeaderPlaces& m_places;
    const std::function<bool()>& m_isCancelled;
    FrameDecoder m_decoder;
    std::vector<std::uint8_t> m_record;
    std::int64_t m_seconds = 0;
    std::uint64_t m_largest = 0;
    bool m_wasCancelled = false;
};

Fault Checker::check() {
    if (Fault fault = checkFields()) return fault;
    while (m_blocks.position() < m_fileSize) {
        if (Fault fault = checkIndexEntry()) return fault;
        if (Fault fault = checkBlock()) return fault;
        if (m_wasCancelled) return std::nullopt;
        ++m_seconds;
    }
    return checkTotals();
}

Fault Checker::checkFields() {
    const std::uint64_t fieldsAt = m_places.totalFrames - layout::totalFrames;
    std::array<std::uint8_t, layout::fixedFieldsSize> fields{};
    if (m_file->readAt(fieldsAt, fields) < fields.size())
        return MovieFault{fieldsAt, "the header is cut off"};
    const std::span<const std::uint8_t, layout::fixedFieldsSize> bytes(fields);

    std::array<std::uint8_t, 2> titleLength{};
    m_file->readAt(layout::headerBody, titleLength);
    if (bigEndian::load16(titleLength) % 2 != 0) {
        std::array<std::uint8_t, 1> pad{};
        m_file->readAt(fieldsAt - 1, pad);
        if (pad[0] != 0) return MovieFault{fieldsAt - 1, "the byte behind the title is not 0"};
    }
    if (bigEndian::load16(bytes.first<2>()) == 0) return MovieFault{fieldsAt, "the width is 0"};
    if (bigEndian::load16(bytes.subspan<2, 2>()) == 0) return MovieFault{fieldsAt + 2, "the height is 0"};
    if (bigEndian::load16(bytes.subspan<4, 2>()) == 0) return MovieFault{fieldsAt + 4, "the rate is 0"};
    if (std::ranges::find(screenModes, m_header.mode) == screenModes.end())
        return MovieFault{fieldsAt + 6, "the mode is " + text(m_header.mode) + ", not 4 or 32"};
    if (m_header.sampleRate != layout::sampleRate) {
        return MovieFault{fieldsAt + 16, "the sample rate is " + text(m_header.sampleRate) + ", not " +
                                             text(layout::sampleRate)};
    }
    if (m_header.audioChannels > mostChannels)
        return MovieFault{fieldsAt + 18, "there are " + text(m_header.audioChannels) + " sound channels"};
    if ((m_header.options & ~layout::loopOption) != 0)
        return MovieFault{fieldsAt + 20, "the options have unknown bits: " + text(m_header.options)};
    if (bigEndian::load16(bytes.last<2>()) != 0)
        return MovieFault{fieldsAt + 22, "the reserved field is not 0"};
    if ((m_places.data - m_places.frameIndex) % layout::wordSize != 0)
        return MovieFault{layout::magic.size(), "the header size leaves a part of an index entry"};
    if (m_header.blockSize == 0 && (m_places.data < m_fileSize || m_header.frameCount != 0))
        return MovieFault{m_places.maxSecondBlockSize, "the movie was never finished"};
    return std::nullopt;
}

/// Checks the index entry of the block at the position.
Fault Checker::checkIndexEntry() {
    const std::uint64_t place = m_index.position();
    if (place + layout::wordSize > m_places.data)
        return MovieFault{m_blocks.position(), "second " + text(m_seconds) + " has no place in the index"};
    const std::uint32_t entry = m_index.readWord().value_or(0);
    if (entry == m_blocks.position()) return std::nullopt;
    return MovieFault{place, "the index has second " + text(m_seconds) + " at " + text(entry) +
                                 ", but it stands at " + text(m_blocks.position())};
}

Fault Checker::checkBlock() {
    const std::uint64_t start = m_blocks.position();
    const std::optional<std::uint32_t> length = m_blocks.readWord();
    const std::uint64_t end = start + layout::wordSize + length.value_or(0);
    if (!length || end > m_fileSize)
        return MovieFault{start, "the file ends within second " + text(m_seconds)};

    const std::uint64_t soundAt = m_blocks.position();
    std::uint32_t soundSize = 0;
    if (Fault fault = checkPart(end, "the sound" + inSecond(), soundSize)) return fault;
    const std::int64_t expected = std::int64_t{m_header.audioChannels} * layout::sampleRate;
    if (soundSize != expected) {
        return MovieFault{
            soundAt, "the sound" + inSecond() + " has " + text(soundSize) + " bytes, not " + text(expected)};
    }
    m_blocks.skip(soundSize);
    for (int frame = 0; frame < m_header.fps; ++frame) {
        m_wasCancelled = m_isCancelled && m_isCancelled();
        if (m_wasCancelled) return std::nullopt;
        if (Fault fault = checkFrame(end, "frame " + text(m_seconds * m_header.fps + frame))) return fault;
    }
    if (m_blocks.position() != end) {
        return MovieFault{m_blocks.position(),
                          text(end - m_blocks.position()) + " bytes behind the last frame" + inSecond()};
    }
    m_largest = std::max(m_largest, end - start);
    return std::nullopt;
}

/// Reads the size field at the position and checks it; leaves the position after the field.
Fault Checker::checkPart(std::uint64_t blockEnd, const std::string& name, std::uint32_t& size) {
    const std::uint64_t place = m_blocks.position();
    const std::optional<std::uint32_t> word =
        blockEnd - place < layout::wordSize ? std::nullopt : m_blocks.readWord();
    if (!word) return MovieFault{place, name + " is missing: second " + text(m_seconds) + " ends before it"};
    if (*word > blockEnd - m_blocks.position())
        return MovieFault{place, name + " passes the end of second " + text(m_seconds)};
    size = *word;
    return std::nullopt;
}

Fault Checker::checkFrame(std::uint64_t blockEnd, const std::string& name) {
    std::uint32_t size = 0;
    if (Fault fault = checkPart(blockEnd, name, size)) return fault;
    const std::uint64_t offset = m_blocks.position();
    // Movies store no raw pixels, so the size of the movie is not needed.
    if (!readFrameRecord(m_blocks, size, 0, 0, m_record))
        return MovieFault{offset, "the file ends within " + name};
    if (m_record.size() < size)
        return MovieFault{offset, name + " has " + text(size) + " bytes, more than its picture can take"};
    return checkRecord(offset, name);
}

Fault Checker::checkRecord(std::uint64_t offset, const std::string& name) {
    const auto image = m_decoder.decodeFrame(m_record, m_header.width, m_header.height);
    if (!image) return MovieFault{offset, name + " cannot be decoded: " + m_decoder.lastDecodeDebug()};
    const int colourMode = m_header.mode == 4 ? 0 : m_header.mode;
    if (m_record.size() <= sprite::controlAt || m_record[sprite::colourModeAt] != colourMode)
        return MovieFault{offset, name + " is not of Mode " + text(m_header.mode)};
    // Sprites may have more parts. In movies, Mode 32 patterns are always compressed and Mode 4 patterns
    // never.
    if (m_record[sprite::controlAt] != (m_header.mode == 4 ? 0 : sprite::patternCompressed))
        return MovieFault{offset + sprite::controlAt, name + " is not stored as movies store frames"};
    const int width =
        m_header.mode == 4 ? std::max(m_header.width, sprite::smallestMode4Width) : m_header.width;
    if (image->width != width || image->height != m_header.height) {
        return MovieFault{offset, name + " is " + text(image->width) + "x" + text(image->height) +
                                      " pixels, not " + text(width) + "x" + text(m_header.height)};
    }
    return std::nullopt;
}

/// Checks the header fields that describe all blocks together.
Fault Checker::checkTotals() {
    m_index.skipZeroWords(m_places.data);
    if (m_index.position() < m_places.data)
        return MovieFault{m_index.position(), "an index entry points to a second that is not there"};
    const std::int64_t frames = m_seconds * m_header.fps;
    if (m_header.frameCount != frames) {
        return MovieFault{m_places.totalFrames, "the header counts " + text(m_header.frameCount) +
                                                    " frames, but there are " + text(frames)};
    }
    if (static_cast<std::uint64_t>(m_header.blockSize) != m_largest) {
        return MovieFault{m_places.maxSecondBlockSize, "the largest second has " + text(m_largest) +
                                                           " bytes, not " + text(m_header.blockSize)};
    }
    return std::nullopt;
}

}  // namespace

MovieCheck checkMovie(const Open& open, const std::function<bool()>& isCancelled) {
    MovieCheck result;
    LocatedHeader located;
    try {
        located = readHeader(*open());
    } catch (const ZEBFormatError& error) {
        if (error.code() == ZEBFormatError::wrongMagic) throw;
        result.fault = MovieFault{layout::magic.size(), headerFault(error)};
        return result;
    }
    Checker checker(open, located, isCancelled);
    result.fault = checker.check();
    result.seconds = checker.seconds();
    result.isCancelled = checker.wasCancelled();
    result.header = std::move(located.header);
    return result;
}

}  // namespace zeb
