#include "format/MovieCheck.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/PlatformError.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

constexpr int fps = 2, seconds = 2;
constexpr std::size_t soundBytes = 20000;
/// 16 x 8 pixels of Mode 32, stored as one run-length packet.
const Bytes record = {2, 32, 0, 0x40, 0, 16, 0,   8,   0,   0,   0, 0, 0, 0, 0,    12,   0,   0,
                      0, 0,  0, 0,    0, 0,  'R', 'L', 'E', '2', 0, 0, 1, 0, 0x81, 0x12, 0x34};
constexpr std::size_t recordBytes = 24 + 8 + 3;
constexpr std::size_t fields = golden::totalFrames - 8, index = golden::index, data = golden::firstBlock;
constexpr std::size_t blockBytes = 4 + 4 + soundBytes + fps * (4 + recordBytes);
constexpr std::size_t firstFrame = data + 8 + soundBytes;

/// Of the golden movie's form, but with whole seconds of sound and real frames.
Bytes movie() {
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
    const Bytes sound(soundBytes, 128);
    const std::vector<std::span<const std::uint8_t>> frames(fps, record);
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
    const auto resize = [](std::size_t size) { return [=](Bytes& bytes) { bytes.resize(size); }; };
    const std::string second = std::to_string(data + blockBytes);
    const std::string largest = std::to_string(blockBytes);
    const struct {
        std::function<void(Bytes&)> damage;
        std::size_t offset;
        std::string text;
    } cases[] = {
        {set(7, 39), 4, "the header size leaves a part of an index entry"},
        {set(fields - 1, 1), fields - 1, "the byte behind the title is not 0"},
        {set(fields + 7, 8), fields + 6, "the mode is 8, not 4 or 32"},
        {set(fields + 19, 3), fields + 18, "there are 3 sound channels"},
        {set(fields + 11, 5), fields + 8, "the header counts 5 frames, but there are 4"},
        {set(fields + 15, 0), fields + 12, "the largest second has " + largest + " bytes, not 19968"},
        {set(index + 7, 0), index + 4, "the index has second 1 at 19968, but it stands at " + second},
        {set(fields + 19, 2), data + 4, "the sound of second 0 has 20000 bytes, not 40000"},
        {set(data + 4, 1), data + 4, "the sound of second 0 passes the end of second 0"},
        {set(firstFrame + 2, 1), firstFrame, "frame 0 passes the end of second 0"},
        {set(firstFrame + 4 + 1, 33), firstFrame + 4, "frame 0 is not of Mode 32"},
        {set(firstFrame + 4 + 3, 0xC0), firstFrame + 7, "frame 0 is not stored as movies store frames"},
        {set(firstFrame + 4 + 5, 8), firstFrame + 4, "frame 0 is 8x8 pixels, not 16x8"},
        {resize(data + blockBytes + 100), data + blockBytes, "the file ends within second 1"},
        {resize(data + blockBytes), index + 4, "an index entry points to a second that is not there"},
        {resize(good.size() + 1), good.size(), "second 2 has no place in the index"},
        {[](Bytes& bytes) { std::fill_n(bytes.begin() + fields + 12, 4, std::uint8_t{0}); }, fields + 12,
         "the movie was never finished"},
    };
    for (const auto& [damage, offset, text] : cases) {
        Bytes bytes = good;
        damage(bytes);
        EXPECT_EQ(verdict(bytes), std::to_string(offset) + " " + text);
    }
}

TEST(MovieCheck, EveryByteOfAHeaderAndRecordMatters) {
    // The title may be anything, and so may pixels and sound; every other byte turned over is found.
    const Bytes good = movie();
    const auto isFree = [](std::size_t place) {
        const bool isTitle = place >= 10 && place < fields - 1;
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
