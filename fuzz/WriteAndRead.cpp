// Writes a movie, finished or interrupted and then finished, and reads it back byte by byte.

#include "format/ZEBHeader.h"
#include "format/ZEBReader.h"
#include "format/ZEBWriter.h"
#include "fuzz/FuzzInput.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;

namespace {

[[maybe_unused]] const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;

struct Second {
    fuzz::Bytes sound;
    std::vector<fuzz::Bytes> frames;
};

void checkMovie(const fuzz::Bytes& bytes, const std::vector<Second>& seconds, const MovieParameters& movie) {
    ZEBReader reader([&] { return std::make_unique<test::MemoryReadableFile>(bytes); });
    const ZEBHeader& header = reader.readHeader();
    fuzz::require(header.width == std::max<std::int64_t>(movie.width, 1) &&
                      header.height == std::max<std::int64_t>(movie.height, 1) && header.fps == movie.fps &&
                      header.mode == movie.qlMode && header.audioChannels == movie.audioChannels &&
                      header.options == (movie.loop ? 1 : 0) && header.sampleRate == 20000 &&
                      header.title == decodeTitle(encodeTitle(movie.title)) &&
                      header.frameCount == header.fps * static_cast<std::int64_t>(seconds.size()),
                  "fields come back");

    FrameDecoder decoder;
    const auto checkNext = [&](const fuzz::Bytes& record) {
        const auto expected = decoder.decodeFrame(record, header.width, header.height);
        const auto image = reader.nextFrame(false);
        fuzz::require(image.has_value() == expected.has_value(), "the frame's record");
        if (image) fuzz::require(image->pixels == expected->pixels, "the frame's picture");
    };
    fuzz::Bytes sound;
    for (const Second& second : seconds) {
        if (movie.audioChannels > 0) sound.insert(sound.end(), second.sound.begin(), second.sound.end());
        for (const fuzz::Bytes& frame : second.frames)
            checkNext(frame);
    }
    fuzz::require(reader.readAllAudio().bytes == sound, "the sound comes back");
    for (std::size_t second = seconds.size(); second-- > 0;) {
        reader.seekToFrame(header.fps * static_cast<std::int64_t>(second + 1) - 1);
        checkNext(seconds[second].frames.back());
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const bool isFinished = input.number(1) % 4 != 0;
    input.bytes(1);  // ignored, as is the first byte of each two-byte field below
    const fuzz::Bytes title = input.bytes(input.number(1));
    MovieParameters movie;
    movie.title.assign(title.begin(), title.end());
    for (std::int64_t* field : {&movie.width, &movie.height, &movie.fps})
        *field = static_cast<std::int64_t>(input.number(2) % 256);
    movie.qlMode = input.number(1) % 2 != 0 ? 4 : 32;
    movie.audioChannels = static_cast<int>(input.number(1) % 3);
    movie.loop = input.number(1) % 2 != 0;
    movie.frameIndexCount = static_cast<std::int64_t>(input.number(1));

    std::vector<Second> seconds;
    while (!input.isEmpty()) {
        Second& second = seconds.emplace_back();
        second.sound = input.bytes(input.number(1));
        for (std::int64_t f = 0; f < movie.fps; ++f)
            second.frames.push_back(input.bytes(input.number(1)));
    }
    movie.totalFrames = movie.fps * static_cast<std::int64_t>(seconds.size());

    test::MemoryDisk disk;
    ZEBWriter writer(std::make_unique<test::MemoryWritableFile>(disk), movie);
    for (const Second& second : seconds) {
        const std::vector<std::span<const std::uint8_t>> frames(second.frames.begin(), second.frames.end());
        writer.writeSecond(second.sound, frames);
        fuzz::require(writer.bytesWritten() == disk.bytes.size(), "the writer knows its position");
    }
    if (movie.fps == 0) return 0;  // readers read 0 as 1
    if (isFinished && seconds.size() <= static_cast<std::uint64_t>(movie.frameIndexCount)) {
        writer.finish();
    } else {
        fuzz::require(test::finish(disk) == static_cast<std::int64_t>(seconds.size()),
                      "finishing keeps every second");
        if (seconds.empty()) return 0;
    }
    checkMovie(disk.bytes, seconds, movie);
    return 0;
}
