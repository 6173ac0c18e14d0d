#include "format/ZEBWriter.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <exception>
#include <limits>

#include "format/BigEndian.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"
#include "format/ZEBHeader.h"
#include "platform/files/FileManager.h"

namespace zeb {
namespace {

using Word = std::array<std::uint8_t, layout::wordSize>;

template <typename Field>
Field checked(std::int64_t value, const char* label) {
    if (value < 0) throw ZEBWriterError::valueOutOfRange(label, 0);
    const auto magnitude = static_cast<std::uint64_t>(value);
    if (magnitude > std::numeric_limits<Field>::max())
        throw ZEBWriterError::valueOutOfRange(label, magnitude);
    return static_cast<Field>(value);
}

std::uint32_t checkedSize(std::uint64_t size, const char* label) {
    if (size > layout::maxWord) throw ZEBWriterError::valueOutOfRange(label, size);
    return static_cast<std::uint32_t>(size);
}

/// Returns first + count x layout::wordSize, or the largest number if the sum overflows.
std::uint64_t sizeWithWords(std::uint64_t first, std::uint64_t count) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    return count > (largest - first) / layout::wordSize ? largest : first + count * layout::wordSize;
}

void append(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace

std::unique_ptr<WritableFile> createMovieFile(const std::string& path) {
    try {
        files::removeFile(path);
    } catch (const FileError&) {
        // Creating the file fails too and throws the error.
    }
    try {
        return createForWriting(path);
    } catch (const FileError&) {
        throw ZEBConverterError::cannotCreateOutput(path);
    }
}

ZEBWriter::ZEBWriter(const std::string& path, const MovieParameters& movie)
    : ZEBWriter(createMovieFile(path), movie) {}

ZEBWriter::ZEBWriter(std::unique_ptr<WritableFile> handle, const MovieParameters& movie)
    : m_handle(std::move(handle)) {
    assert(movie.frameIndexCount >= 0);
    assert(movie.audioChannels >= 0 && movie.audioChannels <= 65535);
    using bigEndian::append16, bigEndian::append32;

    const std::vector<std::uint8_t> title = encodeTitle(movie.title);
    std::vector<std::uint8_t> header(layout::magic.begin(), layout::magic.end());
    append32(header, 0);  // placeholder of the header size
    append16(header, static_cast<std::uint16_t>(title.size()));
    append(header, title);
    if (title.size() % 2 != 0) header.push_back(0);

    append16(header, checked<std::uint16_t>(movie.width, "width"));
    append16(header, checked<std::uint16_t>(movie.height, "height"));
    append16(header, checked<std::uint16_t>(movie.fps, "fps"));
    append16(header, checked<std::uint16_t>(movie.qlMode, "qlMode"));
    append32(header, checked<std::uint32_t>(movie.totalFrames, "totalFrames"));
    m_headerMaxBlockFieldPos = header.size();
    append32(header, 0);
    append16(header, layout::sampleRate);
    append16(header, static_cast<std::uint16_t>(movie.audioChannels));
    append16(header, movie.loop ? layout::loopOption : 0);
    append16(header, 0);

    m_frameIndexCount = movie.frameIndexCount;
    m_frameIndexOffsetsPos = header.size();
    // Check the size before the index is allocated, so that an absurd count costs no memory.
    const std::uint64_t headerSize =
        sizeWithWords(header.size() - layout::headerBody, static_cast<std::uint64_t>(m_frameIndexCount));
    bigEndian::store32(std::span(header).subspan<layout::magic.size(), 4>(),
                       checkedSize(headerSize, "header size"));
    header.resize(layout::headerBody + headerSize);

    try {
        m_handle->write(header);
        m_bytesWritten = header.size();
    } catch (...) {
        cutOff(0);
        throw;
    }
    m_secondBlockOffsets.reserve(static_cast<std::size_t>(m_frameIndexCount));
}

void ZEBWriter::writeSecond(std::span<const std::uint8_t> sound,
                            std::span<const std::span<const std::uint8_t>> frames) {
    m_secondBlockOffsets.push_back(checkedSize(m_bytesWritten, "one-second block file offset"));

    std::uint64_t blockLength = layout::wordSize + checkedSize(sound.size(), "sound data size");
    for (const auto frame : frames)
        blockLength += layout::wordSize + checkedSize(frame.size(), "frame data size");
    checkedSize(blockLength, "one-second block length");
    const std::uint64_t totalSize = layout::wordSize + blockLength;

    // Write the block in pieces, each part after its length, so that no part is copied.
    std::vector<Word> lengths(2 + frames.size());
    std::vector<std::span<const std::uint8_t>> pieces;
    const auto add = [&](std::uint64_t length, std::span<const std::uint8_t> part) {
        Word& word = lengths[pieces.size() / 2];
        bigEndian::store32(word, static_cast<std::uint32_t>(length));
        pieces.insert(pieces.end(), {word, part});
    };
    add(blockLength, {});
    add(sound.size(), sound);
    for (const auto frame : frames)
        add(frame.size(), frame);
    try {
        m_handle->write(pieces);
        m_bytesWritten += totalSize;
    } catch (...) {
        cutOff(m_secondBlockOffsets.back());
        throw;
    }
    m_handle->startWriteback();

    m_maxSecondBlockSize =
        std::max(m_maxSecondBlockSize, checkedSize(totalSize, "one-second block total size"));
}

void ZEBWriter::finish() {
    const auto writeWord = [this](std::uint32_t value) {
        Word bytes{};
        bigEndian::store32(bytes, value);
        m_handle->write(bytes);
    };
    m_handle->seek(m_headerMaxBlockFieldPos);
    writeWord(m_maxSecondBlockSize);

    m_handle->seek(m_frameIndexOffsetsPos);
    if (m_secondBlockOffsets.size() > static_cast<std::uint64_t>(m_frameIndexCount))
        throw ZEBWriterError::valueOutOfRange("frame index offsets count", m_secondBlockOffsets.size());
    for (const std::uint32_t offset : m_secondBlockOffsets)
        writeWord(offset);

    m_handle->seekToEnd();
    m_handle->synchronise();
}

void ZEBWriter::close() {
    std::exception_ptr firstFailure;
    try {
        m_handle->synchronise();
    } catch (...) {
        firstFailure = std::current_exception();
    }
    try {
        m_handle->close();
    } catch (...) {
        if (!firstFailure) firstFailure = std::current_exception();
    }
    if (firstFailure) std::rethrow_exception(firstFailure);
}

/// Removes the incomplete block that starts at `position` after a failed write. Ignores errors: the failed
/// write is reported already, and a torn block can be cut off later.
void ZEBWriter::cutOff(std::uint64_t position) noexcept {
    m_bytesWritten = position;
    try {
        m_handle->truncate(position);
        m_handle->seek(position);
    } catch (...) {
        return;
    }
}

}  // namespace zeb
