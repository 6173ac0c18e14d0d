#include "format/ZEBReader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "format/BigEndian.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"
#include "format/walk/BlockWalker.h"
#include "format/walk/FrameRecord.h"

namespace zeb {
namespace {

/// Appends `count` bytes to `target`; returns false if the file has fewer.
bool appendBytes(FileCursor& file, std::uint64_t count, std::vector<std::uint8_t>& target) {
    if (count > file.remaining()) return false;
    const std::size_t before = target.size();
    target.resize(before + static_cast<std::size_t>(count));
    return file.read(std::span(target).subspan(before)) == count;
}

std::vector<std::uint32_t> readIndex(ReadableFile& file, const HeaderPlaces& places) {
    std::vector<std::uint32_t> offsets(
        std::min<std::uint64_t>(places.frameIndexCount, ZEBReader::mostEntriesKept));
    FileCursor cursor(file);
    cursor.seek(places.frameIndex);
    for (std::uint32_t& offset : offsets)
        offset = cursor.readWord().value_or(0);
    return offsets;
}

/// Reads a 32-bit value of the soundtrack; returns nothing at the end of the file.
std::optional<std::uint32_t> optionalWord(FileCursor& file) {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    const std::size_t count = file.read(bytes);
    if (count == 0) return std::nullopt;
    if (count < bytes.size()) throw ZEBReaderError::truncatedWord();
    return bigEndian::load32(bytes);
}

std::uint32_t requiredWord(FileCursor& file) {
    const std::optional<std::uint32_t> word = optionalWord(file);
    if (!word) throw ZEBReaderError::missingWord();
    return *word;
}

}  // namespace

ZEBReader::ZEBReader(const std::string& path) : ZEBReader([path] { return openForReading(path); }) {}

ZEBReader::ZEBReader(Open open) : m_open(std::move(open)) {}

const ZEBHeader& ZEBReader::readHeader() {
    if (m_file && m_located) return m_located->header;
    m_located.reset();
    m_file.emplace(m_open());
    LocatedHeader located = zeb::readHeader(m_file->file());
    located.header.indexOffsets = readIndex(m_file->file(), located.places);
    m_file->seek(located.places.data);
    m_located = std::move(located);
    m_framesLeftInSecond = 0;
    m_reachedEOF = false;
    m_didPrintDecodeFailure = false;
    return m_located->header;
}

FileCursor& ZEBReader::openFile() {
    if (!m_file) throw ZEBFormatError::noFileHandle();
    return *m_file;
}

std::uint32_t ZEBReader::readWord() {
    const std::optional<std::uint32_t> word = openFile().readWord();
    if (!word) throw ZEBFormatError::unexpectedEnd();
    return *word;
}

void ZEBReader::skip(std::uint64_t count) {
    if (!openFile().skip(count)) throw ZEBFormatError::unexpectedEnd();
}

void ZEBReader::seekToFrame(std::int64_t k) {
    if (!m_file || !m_located) return;
    const ZEBHeader& header = m_located->header;
    const std::int64_t frame =
        std::clamp<std::int64_t>(k, 0, std::max<std::int64_t>(header.frameCount - 1, 0));
    const std::int64_t second = frame / header.fps;
    if (const auto block = BlockWalker(m_file->file(), *m_located).indexedBlock(second)) {
        m_file->seek(*block);
    } else {
        m_file->seek(m_located->places.data);
        for (std::int64_t i = 0; i < second; ++i)
            skip(readWord());
    }
    m_reachedEOF = false;
    m_framesLeftInSecond = 0;
    readWord();  // the block's length
    skip(readWord());
    m_framesLeftInSecond = header.fps;
    for (std::int64_t i = 0; i < frame % header.fps; ++i) {
        skip(readWord());
        --m_framesLeftInSecond;
    }
}

/// Enters the block at the position. Throws `ZEBFormatError::endOfMovie` at the end of the file.
void ZEBReader::startBlock() {
    if (!openFile().readWord()) {
        m_reachedEOF = true;
        throw ZEBFormatError::endOfMovie();
    }
    skip(readWord());
    m_framesLeftInSecond = m_located->header.fps;
}

std::optional<FrameImage> ZEBReader::nextFrame(bool loop) {
    if (!m_file || !m_located) return std::nullopt;
    if (m_reachedEOF) {
        if (!loop) return std::nullopt;
        seekToFrame(0);
    }
    if (m_framesLeftInSecond == 0) startBlock();
    const std::uint32_t size = readWord();
    const ZEBHeader& header = m_located->header;
    if (!readFrameRecord(*m_file, size, header.width, header.height, m_record)) {
        m_file->skip(size);  // skips to the end of the file, as a partial read would
        throw ZEBFormatError::unexpectedEnd();
    }
    --m_framesLeftInSecond;
    std::optional<FrameImage> image = m_decoder.decodeFrame(m_record, header.width, header.height);
    if (image) {
        m_didPrintDecodeFailure = false;
    } else if (!m_didPrintDecodeFailure) {
        std::printf("ZEB decode failed: %s\n", m_decoder.lastDecodeDebug().c_str());
        m_didPrintDecodeFailure = true;
    }
    return image;
}

Soundtrack ZEBReader::readAllAudio() {
    FileCursor file(m_open());
    const std::optional<std::uint32_t> magic = optionalWord(file);
    if (!magic) return {};
    if (*magic != bigEndian::load32(layout::magic)) throw ZEBReaderError::notAMovie();
    const std::uint32_t headerSize = requiredWord(file);
    if (headerSize > file.remaining()) throw ZEBReaderError::unexpectedEnd();
    const LocatedHeader located = zeb::readHeader(file.file());
    const ZEBHeader& header = located.header;
    file.seek(located.places.data);
    Soundtrack sound{{}, header.sampleRate, header.audioChannels};
    if (header.audioChannels < 1 || header.sampleRate < 1) return sound;
    while (optionalWord(file)) {
        if (!appendBytes(file, requiredWord(file), sound.bytes)) throw ZEBReaderError::unexpectedEnd();
        for (int i = 0; i < header.fps; ++i) {
            const std::optional<std::uint32_t> size = optionalWord(file);
            if (!size) return sound;
            if (!file.skip(*size)) throw ZEBReaderError::unexpectedEnd();
        }
    }
    return sound;
}

}  // namespace zeb
