#include "conversion/sound/WAVFile.h"

#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "conversion/export/ExportError.h"

namespace zeb {
namespace {

constexpr std::uint64_t headSize = 44;
constexpr std::uint64_t riffOverhead = headSize - 8;  // bytes counted by the RIFF size besides the data
constexpr std::uint64_t largestSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t pcm = 1;

class Head {
public:
    void text(std::string_view characters) {
        bytes.insert(bytes.end(), characters.begin(), characters.end());
    }
    void number(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i, value >>= 8)
            bytes.push_back(static_cast<std::uint8_t>(value));
    }
    std::vector<std::uint8_t> bytes;
};

}  // namespace

WAVFile::WAVFile(WritableFile& file, int channels, int sampleRate)
    : m_file(file), m_channels(channels), m_sampleRate(sampleRate) {
    writeHead();
}

void WAVFile::add(std::span<const std::uint8_t> samples) {
    // Reserve one byte for the padding of an odd length.
    if (m_dataSize + samples.size() + 1 > largestSize - riffOverhead) throw ExportError::soundTooLong();
    m_file.write(samples);
    m_dataSize += samples.size();
}

void WAVFile::finish() {
    if (m_dataSize % 2 != 0) m_file.write(std::array<std::uint8_t, 1>{});
    m_file.seek(0);
    writeHead();
}

std::uint64_t WAVFile::bytesWritten() const noexcept {
    return headSize + m_dataSize;
}

void WAVFile::writeHead() {
    const auto channels = static_cast<std::uint64_t>(m_channels);
    const auto rate = static_cast<std::uint64_t>(m_sampleRate);
    Head head;
    head.text("RIFF");
    head.number(riffOverhead + m_dataSize + m_dataSize % 2, 4);
    head.text("WAVEfmt ");
    head.number(16, 4);
    head.number(pcm, 2);
    head.number(channels, 2);
    head.number(rate, 4);
    head.number(rate * channels, 4);  // bytes per second
    head.number(channels, 2);         // bytes per sample of all channels
    head.number(8, 2);                // bits
    head.text("data");
    head.number(m_dataSize, 4);
    m_file.write(head.bytes);
}

}  // namespace zeb
