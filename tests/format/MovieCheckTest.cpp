#include "format/MovieCheck.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "MemoryFile.h"
#include "format/BigEndian.h"
#include "format/ZEBWriter.h"
#include "platform/PlatformError.h"

namespace zeb {
namespace {

using test::MemoryDisk;
using test::MemoryReadableFile;
using test::MemoryWritableFile;
using Bytes = std::vector<std::uint8_t>;

constexpr int width = 2, height = 1, fps = 2, seconds = 3;
constexpr std::size_t soundBytes = 20000;
constexpr std::size_t recordBytes = 24 + 8 + 5;
constexpr std::size_t fields = 12;  // behind the title "a" and its pad byte
constexpr std::size_t index = fields + 24;
constexpr std::size_t data = index + 4 * seconds;
constexpr std::size_t blockBytes = 4 + 4 + soundBytes + fps * (4 + recordBytes);
constexpr std::size_t firstFrame = data + 8 + soundBytes;

/// Two pixels of Mode 32, stored as one run-length packet of two elements.
Bytes record() {
    Bytes bytes(24);
    bytes[0] = 2;
    bytes[1] = 32;
    bytes[3] = 0x40;
    bytes[5] = width;
    bytes[7] = height;
    bytes[15] = 12;
    for (const int byte :
         std::initializer_list<int>{'R', 'L', 'E', '2', 0, 0, 0, 4, 1, 0x12, 0x34, 0x56, 0x78})
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

Bytes movie() {
    MovieParameters parameters;
    parameters.title = "a";
    parameters.width = width;
    parameters.height = height;
    parameters.fps = fps;
    parameters.qlMode = 32;
    parameters.totalFrames = fps * seconds;
    parameters.frameIndexCount = seconds;
    parameters.audioChannels = 1;
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), parameters);
    const Bytes sound(soundBytes, 128), frame = record();
    const std::vector<std::span<const std::uint8_t>> frames(fps, frame);
    for (int second = 0; second < seconds; ++second)
        writer.writeSecond(sound, frames);
    writer.finish();
    return disk.bytes;
}

/// "right", or the fault with its offset.
std::string verdict(const Bytes& bytes) {
    try {
        const MovieCheck check =
            checkMovie([&bytes] { return std::make_unique<MemoryReadableFile>(bytes); }, {});
        if (!check.fault) return check.seconds == seconds ? "right" : "right, but shorter";
        return std::to_string(check.fault->offset) + " " + check.fault->text;
    } catch (const PlatformError& error) {
        return error.what();
    }
}

TEST(MovieCheck, FindsTheFirstFault) {
    const Bytes good = movie();
    ASSERT_EQ(good.size(), data + seconds * blockBytes);
    EXPECT_EQ(verdict(good), "right");

    const auto set = [](std::size_t place, int value) {
        return [=](Bytes& bytes) { bytes[place] = static_cast<std::uint8_t>(value); };
    };
    const auto at = [](std::size_t offset) { return std::to_string(offset) + " "; };
    const std::string secondBlock = std::to_string(data + blockBytes);
    const struct {
        std::function<void(Bytes&)> damage;
        std::string verdict;
    } cases[] = {
        {set(3, '2'), "Kein ZEB1-File"},
        {set(7, 3), at(4) + "Header zu kurz"},
        {set(7, 2 + 2 + 24 + 4 * seconds + 1), at(4) + "the header size leaves a part of an index entry"},
        {set(fields - 1, 1), at(fields - 1) + "the byte behind the title is not 0"},
        {set(fields + 1, 0), at(fields) + "the width is 0"},
        {set(fields + 7, 8), at(fields + 6) + "the mode is 8, not 4 or 32"},
        {set(fields + 17, 0), at(fields + 16) + "the sample rate is 19968, not 20000"},
        {set(fields + 19, 3), at(fields + 18) + "there are 3 sound channels"},
        {set(fields + 21, 2), at(fields + 20) + "the options have unknown bits: 2"},
        {set(fields + 23, 1), at(fields + 22) + "the reserved field is not 0"},
        {set(fields + 11, 4), at(fields + 8) + "the header counts 4 frames, but there are 6"},
        {set(fields + 15, 0), at(fields + 12) + "the largest second has " + std::to_string(blockBytes) +
                                  " bytes, not " + std::to_string(blockBytes & ~std::size_t{255})},
        {set(index + 7, 0), at(index + 4) + "the index has second 1 at " +
                                std::to_string((data + blockBytes) & ~std::size_t{255}) +
                                ", but it stands at " + secondBlock},
        {set(fields + 19, 2), at(data + 4) + "the sound of second 0 has 20000 bytes, not 40000"},
        {set(data + 4, 1), at(data + 4) + "the sound of second 0 passes the end of second 0"},
        {set(firstFrame + 2, 1), at(firstFrame) + "frame 0 passes the end of second 0"},
        {set(firstFrame + 4 + 1, 33), at(firstFrame + 4) + "frame 0 is not of Mode 32"},
        {set(firstFrame + 4 + 3, 0), at(firstFrame + 7) + "frame 0 is not stored as movies store frames"},
        {set(firstFrame + 4 + 5, 1), at(firstFrame + 4) + "frame 0 is 1x1 pixels, not 2x1"},
        {[](Bytes& bytes) { bytes.resize(data + 2 * blockBytes + 100); },
         at(data + 2 * blockBytes) + "the file ends within second 2"},
        {[](Bytes& bytes) { bytes.resize(data + 2 * blockBytes); },
         at(index + 8) + "an index entry points to a second that is not there"},
        {[](Bytes& bytes) { bytes.push_back(0); },
         at(data + 3 * blockBytes) + "second 3 has no place in the index"},
        {[](Bytes& bytes) { std::fill_n(bytes.begin() + fields + 12, 4, std::uint8_t{0}); },
         at(fields + 12) + "the movie was never finished"},
    };
    for (const auto& testCase : cases) {
        Bytes bytes = good;
        testCase.damage(bytes);
        EXPECT_EQ(verdict(bytes), testCase.verdict);
    }
}

TEST(MovieCheck, EveryByteOfAHeaderAndRecordMatters) {
    // The title may be anything, and so may pixels and sound; every other byte turned over is found.
    const Bytes good = movie();
    const auto isFree = [](std::size_t place) {
        const bool isTitle = place == fields - 2;
        const bool isLoop = place == fields + 21;  // one bit of it may be set
        const std::size_t inRecord = place - (firstFrame + 4);
        // Form and origin of a sprite mean nothing here; the mask pointer and the pixels may vary.
        const bool isPixels = place >= firstFrame + 4 && (inRecord == 0 || inRecord == 2 || inRecord >= 8);
        return isTitle || isLoop || isPixels;
    };
    for (std::size_t place = 0; place < firstFrame + 4 + recordBytes; ++place) {
        if (place == data + 8) place = firstFrame;  // the sound
        Bytes bytes = good;
        bytes[place] ^= 0xFF;
        if (!isFree(place)) {
            EXPECT_NE(verdict(bytes), "right") << "byte " << place;
        }
    }
}

}  // namespace
}  // namespace zeb
