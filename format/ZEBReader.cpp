#include "format/ZEBReader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "format/BigEndian.h"
#include "format/Layout.h"
#include "format/ZEBFormatError.h"
#include "format/ZEBReaderError.h"

namespace zeb {
namespace {

/// Appends `count` bytes to `target`, in pieces: a size field alone never takes memory. False when fewer are
/// there.
bool appendBytes(FileCursor& file, std::uint64_t count, std::vector<std::uint8_t>& target) {
    if (count > file.remaining()) return false;
    const std::size_t before = target.size();
    target.resize(before + static_cast<std::size_t>(count));
    return file.read(std::span(target).subspan(before)) == count;
}

/// A 32-bit value of the soundtrack path; nothing at the end of the file.
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
    if (m_file && m_header) return *m_header;
    m_header.reset();
    m_file.emplace(m_open());
    std::array<std::uint8_t, 4> magic{};
    if (m_file->read(magic) < magic.size()) throw ZEBFormatError::unexpectedEnd();
    if (!std::equal(magic.begin(), magic.end(), layout::magic.begin())) throw ZEBFormatError::notAMovie();
    const std::uint32_t size = readWord();
    std::vector<std::uint8_t> body;
    if (!appendBytes(*m_file, size, body)) throw ZEBFormatError::unexpectedEnd();
    m_header = parseHeader(body);
    m_dataStartOffset = layout::headerBody + size;
    m_framesLeftInSecond = 0;
    m_reachedEOF = false;
    m_didPrintDecodeFailure = false;
    return *m_header;
}

FileCursor& ZEBReader::openFile() {
    if (!m_file) throw ZEBFormatError::noFileHandle();
    return *m_file;
}

std::uint32_t ZEBReader::readWord() {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    if (openFile().read(bytes) < bytes.size()) throw ZEBFormatError::unexpectedEnd();
    return bigEndian::load32(bytes);
}

void ZEBReader::skip(std::uint64_t count) {
    if (!openFile().skip(count)) throw ZEBFormatError::unexpectedEnd();
}

void ZEBReader::seekToFrame(std::int64_t k) {
    if (!m_file || !m_header) return;
    const std::int64_t frame =
        std::clamp<std::int64_t>(k, 0, std::max<std::int64_t>(m_header->frameCount - 1, 0));
    const std::int64_t second = frame / m_header->fps;
    const std::vector<std::uint32_t>& index = m_header->indexOffsets;
    const auto entry = static_cast<std::size_t>(second);
    if (entry < index.size() && index[entry] != 0) {
        m_file->seek(index[entry]);
    } else {
        m_file->seek(m_dataStartOffset);
        for (std::int64_t i = 0; i < second; ++i)
            skip(readWord());
    }
    m_reachedEOF = false;
    m_framesLeftInSecond = 0;
    readWord();  // the block's length
    skip(readWord());
    m_framesLeftInSecond = m_header->fps;
    for (std::int64_t i = 0; i < frame % m_header->fps; ++i) {
        skip(readWord());
        --m_framesLeftInSecond;
    }
}

/// Enters the block at the position; its absence is the end of the movie.
void ZEBReader::startBlock() {
    std::array<std::uint8_t, layout::wordSize> length{};
    if (openFile().read(length) < length.size()) {
        m_reachedEOF = true;
        throw ZEBFormatError::endOfMovie();
    }
    skip(readWord());
    m_framesLeftInSecond = m_header->fps;
}

std::optional<FrameImage> ZEBReader::nextFrame(bool loop) {
    if (!m_file || !m_header) return std::nullopt;
    if (m_reachedEOF) {
        if (!loop) return std::nullopt;
        seekToFrame(0);
    }
    if (m_framesLeftInSecond == 0) startBlock();
    const std::uint32_t size = readWord();
    m_record.clear();
    if (!appendBytes(*m_file, size, m_record)) {
        m_file->skip(size);  // to the end, where reading what there is would have led
        throw ZEBFormatError::unexpectedEnd();
    }
    --m_framesLeftInSecond;
    std::optional<FrameImage> image = m_decoder.decodeFrame(m_record, m_header->width, m_header->height);
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
    std::vector<std::uint8_t> body;
    if (!appendBytes(file, requiredWord(file), body)) throw ZEBReaderError::unexpectedEnd();
    const ZEBHeader header = parseHeader(body);
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
