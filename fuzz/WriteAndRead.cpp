// What the writer writes, finished or left early and then finished, comes back byte by byte.

#include <optional>

#include "format/PartialFile.h"
#include "format/TitleText.h"
#include "format/ZEBReader.h"
#include "format/ZEBWriter.h"
#include "format/ZEBWriterError.h"
#include "fuzz/FuzzInput.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;

namespace {

[[maybe_unused]] const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;

struct Second {
    fuzz::Bytes sound;
    std::vector<fuzz::Bytes> frames;
};

/// A field's value: mostly one that fits, now and then any number.
std::int64_t field(fuzz::FuzzInput& input, std::size_t bytes) {
    const bool isHostile = input.number(1) > 250;
    return static_cast<std::int64_t>(input.number(isHostile ? 8 : bytes));
}

bool fits(std::int64_t value, std::int64_t largest) {
    return value >= 0 && value <= largest;
}

void checkMovie(const fuzz::Bytes& bytes, const std::vector<Second>& seconds, const MovieParameters& movie) {
    ZEBReader reader([&] { return std::make_unique<test::MemoryReadableFile>(bytes); });
    const ZEBHeader& header = reader.readHeader();
    fuzz::require(header.width == std::max<std::int64_t>(movie.width, 1) &&
                      header.height == std::max<std::int64_t>(movie.height, 1) && header.fps == movie.fps &&
                      header.mode == movie.qlMode && header.audioChannels == movie.audioChannels &&
                      header.options == (movie.loop ? 1 : 0) && header.sampleRate == 20000,
                  "fields come back");
    fuzz::require(header.title == decodeTitle(encodeTitle(movie.title)), "the title comes back");
    fuzz::require(header.frameCount == header.fps * static_cast<std::int64_t>(seconds.size()),
                  "the frames are counted");

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
    const auto torn = static_cast<std::size_t>(input.number(1));
    const fuzz::Bytes title = input.bytes(input.number(1));
    MovieParameters movie;
    movie.title.assign(title.begin(), title.end());
    movie.width = field(input, 1);
    movie.height = field(input, 1);
    movie.fps = field(input, 1);
    movie.qlMode = input.number(1) % 2 != 0 ? 4 : 32;
    movie.audioChannels = static_cast<int>(input.number(1) % 3);
    movie.loop = input.number(1) % 2 != 0;
    movie.frameIndexCount = static_cast<std::int64_t>(input.number(1));

    std::vector<Second> seconds;
    while (!input.isEmpty() && fits(movie.fps, 255)) {
        Second& second = seconds.emplace_back();
        second.sound = input.bytes(input.number(1));
        for (std::int64_t f = 0; f < movie.fps; ++f)
            second.frames.push_back(input.bytes(input.number(1)));
    }
    movie.totalFrames = movie.fps * static_cast<std::int64_t>(fits(movie.fps, 65535) ? seconds.size() : 0);

    const bool hasRoom = fits(movie.width, 65535) && fits(movie.height, 65535) && fits(movie.fps, 65535);
    test::MemoryDisk disk;
    std::optional<ZEBWriter> writer;
    try {
        writer.emplace(std::make_unique<test::MemoryWritableFile>(disk), movie);
    } catch (const ZEBWriterError&) {
        fuzz::require(!hasRoom && disk.bytes.empty(), "what fits is accepted");
        return 0;
    }
    fuzz::require(hasRoom, "what does not fit is refused");
    for (const Second& second : seconds) {
        const std::vector<std::span<const std::uint8_t>> frames(second.frames.begin(), second.frames.end());
        writer->writeSecond(second.sound, frames);
        fuzz::require(writer->bytesWritten() == disk.bytes.size(), "the writer knows its position");
    }
    if (movie.fps == 0) return 0;  // readers take it as 1
    const bool indexSuffices = seconds.size() <= static_cast<std::uint64_t>(movie.frameIndexCount);
    if (isFinished && indexSuffices) {
        writer->finish();
        writer->close();
        checkMovie(disk.bytes, seconds, movie);
        return 0;
    }
    // Left early, the last second perhaps torn.
    if (torn > 0 && !seconds.empty()) {
        std::size_t last = 8 + seconds.back().sound.size();
        for (const fuzz::Bytes& frame : seconds.back().frames)
            last += 4 + frame.size();
        disk.bytes.resize(disk.bytes.size() - std::min(torn, last));
        seconds.pop_back();
    }
    test::MemoryReadableFile source(disk.bytes);
    test::MemoryWritableFile target(disk);
    fuzz::require(finishPartialFile(source, target) == static_cast<std::int64_t>(seconds.size()),
                  "finishing keeps every whole second");
    if (!seconds.empty()) checkMovie(disk.bytes, seconds, movie);
    return 0;
}
