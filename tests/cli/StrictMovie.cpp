#include "tests/cli/StrictMovie.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zeb::test {
namespace {

class Bytes {
public:
    explicit Bytes(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    std::uint64_t take(int count) {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : takeBytes(static_cast<std::size_t>(count)))
            value = value << 8 | byte;
        return value;
    }
    std::vector<std::uint8_t> takeBytes(std::size_t count) {
        if (count > m_bytes.size() - m_position) throw std::runtime_error("the file ends too early");
        const auto start = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_position);
        m_position += count;
        return {start, start + static_cast<std::ptrdiff_t>(count)};
    }
    std::uint64_t position() const { return m_position; }
    bool isAtEnd() const { return m_position == m_bytes.size(); }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

std::uint32_t wordAt(const std::vector<std::uint8_t>& bytes, std::size_t place) {
    return std::uint32_t{bytes[place]} << 24 | std::uint32_t{bytes[place + 1]} << 16 |
           std::uint32_t{bytes[place + 2]} << 8 | bytes[place + 3];
}

// How many bytes the run-length packets from `place` on stand for.
std::size_t expandedSize(const std::vector<std::uint8_t>& record, std::size_t place) {
    std::size_t size = 0;
    while (place < record.size()) {
        const int control = static_cast<std::int8_t>(record[place]);
        require(control != -128, "run-length control");
        const auto items = static_cast<std::size_t>(control >= 0 ? control + 1 : 1 - control);
        place += 1 + (control >= 0 ? 2 * items : 2);
        size += 2 * items;
    }
    require(place == record.size(), "torn run-length packet");
    return size;
}

void checkRecord(const std::vector<std::uint8_t>& record, const StrictMovie& movie) {
    const auto width = static_cast<std::size_t>(movie.width);
    const auto height = static_cast<std::size_t>(movie.height);
    const bool isHighColour = movie.mode == 32;
    require(record.size() >= 32, "frame without pattern");
    require(wordAt(record, 0) == (isHighColour ? 0x02200040u : 0x01000000u), "sprite's form");
    require(wordAt(record, 4) == (width << 16 | height), "sprite's size");
    require(wordAt(record, 8) == 0 && wordAt(record, 16) == 0 && wordAt(record, 20) == 0, "sprite's zeros");
    require(wordAt(record, 12) == (isHighColour ? 12u : 20u), "pattern's place");
    if (isHighColour) {
        require(wordAt(record, 24) == 0x524C4532, "pattern's signature");
        require(wordAt(record, 28) == width * height * 2, "pattern's length");
        require(expandedSize(record, 32) == width * height * 2, "expanded pattern");
    } else {
        const std::size_t rowStride = (2 * ((width + 7) / 8) + 3) / 4 * 4;
        require(record.size() == 32 + height * rowStride, "pattern's size");
    }
}

}  // namespace

StrictMovie readStrictly(const std::string& path) {
    Bytes bytes(path);
    StrictMovie movie;
    require(bytes.take(4) == 0x5A454231, "magic");
    const std::uint64_t dataStart = 8 + bytes.take(4);
    const std::uint64_t titleLength = bytes.take(2);
    bytes.takeBytes(titleLength);
    require(titleLength % 2 == 0 || bytes.take(1) == 0, "title's pad byte");
    movie.width = static_cast<int>(bytes.take(2));
    movie.height = static_cast<int>(bytes.take(2));
    movie.fps = static_cast<int>(bytes.take(2));
    movie.mode = static_cast<int>(bytes.take(2));
    movie.frames = static_cast<std::int64_t>(bytes.take(4));
    const std::uint64_t largestBlock = bytes.take(4);
    require(bytes.take(2) == 20000, "sound rate");
    movie.soundChannels = static_cast<int>(bytes.take(2));
    const std::uint64_t options = bytes.take(2);
    require(options <= 1, "options");
    movie.loop = options == 1;
    require(bytes.take(2) == 0, "reserved");
    require((dataStart - bytes.position()) % 4 == 0, "index size");
    std::vector<std::uint64_t> index((dataStart - bytes.position()) / 4);
    for (std::uint64_t& entry : index)
        entry = bytes.take(4);

    std::uint64_t largestFound = 0;
    for (; !bytes.isAtEnd(); ++movie.seconds) {
        const std::uint64_t start = bytes.position();
        require(static_cast<std::uint64_t>(movie.seconds) < index.size(), "more seconds than index entries");
        require(index[static_cast<std::size_t>(movie.seconds)] == start, "index entry");
        const std::uint64_t end = start + 4 + bytes.take(4);
        const std::uint64_t soundSize = bytes.take(4);
        require(soundSize == static_cast<std::uint64_t>(movie.soundChannels) * 20000, "sound size");
        const auto sound = bytes.takeBytes(soundSize);
        movie.sound.insert(movie.sound.end(), sound.begin(), sound.end());
        for (int i = 0; i < movie.fps; ++i) {
            movie.records.push_back(bytes.takeBytes(bytes.take(4)));
            checkRecord(movie.records.back(), movie);
        }
        require(bytes.position() == end, "block length");
        largestFound = std::max(largestFound, end - start);
    }
    require(movie.seconds > 0, "no seconds");
    require(movie.frames == movie.seconds * movie.fps, "frame count");
    require(largestBlock == largestFound, "largest block");
    const auto rest = index.begin() + static_cast<std::ptrdiff_t>(movie.seconds);
    require(std::all_of(rest, index.end(), [](std::uint64_t entry) { return entry == 0; }),
            "index without block");
    return movie;
}

}  // namespace zeb::test
