#pragma once

#include <cstdint>
#include <span>

#include "platform/files/FileHandle.h"

namespace zeb {

/// Writes a RIFF WAVE file of unsigned 8-bit PCM. All integers are little-endian; sizes have 32 bits
/// (Multimedia Programming Interface and Data Specifications 1.0, IBM and Microsoft, 1991).
class WAVFile {
public:
    /// Writes the header into an empty file, which must outlive this object. All functions throw `FileError`.
    WAVFile(WritableFile& file, int channels, int sampleRate);

    /// Appends interleaved samples. Throws `ExportError` if the file would become too long.
    void add(std::span<const std::uint8_t> samples);
    /// Writes the sizes into the header.
    void finish();

    std::uint64_t bytesWritten() const noexcept;

private:
    WritableFile& m_file;
    int m_channels;
    int m_sampleRate;
    std::uint64_t m_dataSize = 0;

    void writeHead();
};

}  // namespace zeb
