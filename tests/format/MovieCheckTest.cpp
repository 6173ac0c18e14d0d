#include "format/check/MovieCheck.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/base/Error.h"
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
/// The first frame's record has one unused byte at its end, so that its second is the largest.
constexpr std::size_t blockBytes = 4 + 4 + soundBytes + fps * (4 + recordBytes) + 1;
constexpr std::size_t firstFrame = data + 8 + soundBytes;

/// Like the golden movie, but with complete seconds of sound and real frames.
Bytes movie(const MovieParameters& parameters = golden::parameters(), const Bytes& frame = record) {
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), parameters);
    const Bytes sound(soundBytes, 128);
    std::vector<std::span<const std::uint8_t>> frames(fps, frame);
    Bytes longer = frame;
    longer.push_back(0);
    for (int second = 0; second < seconds; ++second) {
        frames[0] = second == 0 ? longer : frame;
        writer.writeSecond(sound, frames);
    }
    writer.finish();
    return disk.bytes;
}

MovieCheck check(const Bytes& bytes, const std::function<bool()>& isCancelled = {}) {
    return checkMovie([&bytes] { return std::make_unique<MemoryReadableFile>(bytes); }, isCancelled);
}

/// "right SECONDS" for a valid movie, else the offset and text of the fault.
std::string verdict(const Bytes& bytes) {
    try {
        const MovieCheck result = check(bytes);
        EXPECT_FALSE(result.isCancelled);
        if (!result.fault) return "right " + std::to_string(result.seconds);
        return std::to_string(result.fault->offset) + " " + result.fault->text;
    } catch (const PlatformError& error) {
        return error.what();
    }
}

using Change = std::function<void(Bytes&)>;
Change set(std::size_t place, Bytes values) {
    return
        [=](Bytes& bytes) { std::ranges::copy(values, bytes.begin() + static_cast<std::ptrdiff_t>(place)); };
}
Change resize(std::size_t size) {
    return [=](Bytes& bytes) { bytes.resize(size); };
}

TEST(MovieCheck, ReportsFirstFaultWithItsOffset) {
    const Bytes good = movie();
    MemoryDisk shorter;
    shorter.bytes.assign(good.begin(), good.end() - 1);
    finish(shorter);
    EXPECT_EQ(verdict(shorter.bytes), "right 1") << "with room in its index";
    ASSERT_EQ(good.size(), data + seconds * blockBytes - 1);
    EXPECT_EQ(verdict(good), "right 2");

    constexpr std::size_t second = data + blockBytes, lastFrame = second + blockBytes - 1 - recordBytes - 4;
    const std::string secondText = std::to_string(second), largest = std::to_string(blockBytes);
    // Makes the length field of the first second larger by `more`.
    const auto length = [](int more) {
        const std::size_t value = blockBytes - 4 + static_cast<std::size_t>(more);
        return set(data, {0, 0, static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)});
    };
    const struct {
        Change damage;
        std::size_t offset;
        std::string text;
    } cases[] = {
        {set(7, {29}), 4, "the header is too short"},
        {set(7, {39}), 4, "the header size leaves a part of an index entry"},
        {set(fields - 1, {1}), fields - 1, "the byte behind the title is not 0"},
        {set(fields, {0, 0}), fields, "the width is 0"},
        {set(fields + 2, {0, 0}), fields + 2, "the height is 0"},
        {set(fields + 4, {0, 0}), fields + 4, "the rate is 0"},
        {set(fields + 7, {8}), fields + 6, "the mode is 8, not 4 or 32"},
        {set(fields + 17, {0x21}), fields + 16, "the sample rate is 20001, not 20000"},
        {set(fields + 19, {3}), fields + 18, "there are 3 sound channels"},
        {set(fields + 21, {2}), fields + 20, "the options have unknown bits: 2"},
        {set(fields + 22, {1}), fields + 22, "the reserved field is not 0"},
        {set(fields + 23, {1}), fields + 22, "the reserved field is not 0"},
        {set(fields + 11, {5}), fields + 8, "the header counts 5 frames, but there are 4"},
        {set(fields + 15, {0}), fields + 12, "the largest second has " + largest + " bytes, not 19968"},
        {set(fields + 12, {0, 0, 0, 0}), fields + 12, "the movie was never finished"},
        {set(index + 7, {0}), index + 4, "the index has second 1 at 19968, but it stands at " + secondText},
        {set(fields + 19, {2}), data + 4, "the sound of second 0 has 20000 bytes, not 40000"},
        {set(fields + 19, {0}), data + 4, "the sound of second 0 has 20000 bytes, not 0"},
        {set(data + 4, {1}), data + 4, "the sound of second 0 passes the end of second 0"},
        {set(firstFrame + 2, {1}), firstFrame, "frame 0 passes the end of second 0"},
        {set(lastFrame + 3, {recordBytes + 1}), lastFrame, "frame 3 passes the end of second 1"},
        {length(5), second, "5 bytes behind the last frame of second 0"},
        {length(-1), second - recordBytes - 4, "frame 1 passes the end of second 0"},
        {length(-int{recordBytes} - 1), second - recordBytes - 4,
         "frame 1 is missing: second 0 ends before it"},
        {set(data, {0, 0, 0, 3}), data + 4, "the sound of second 0 is missing: second 0 ends before it"},
        {set(firstFrame + 5, {33}), firstFrame + 4, "frame 0 is not of Mode 32"},
        {set(firstFrame + 7, {0xC0}), firstFrame + 7, "frame 0 is not stored as movies store frames"},
        {set(firstFrame + 9, {8}), firstFrame + 4, "frame 0 is 8x8 pixels, not 16x8"},
        {set(lastFrame + 11, {7}), lastFrame + 4, "frame 3 is 16x7 pixels, not 16x8"},
        {resize(good.size() - 1), second, "the file ends within second 1"},
        {resize(second + 3), second, "the file ends within second 1"},
        {resize(second), index + 4, "an index entry points to a second that is not there"},
        {resize(good.size() + 1), good.size(), "second 2 has no place in the index"},
    };
    for (const auto& [damage, offset, text] : cases) {
        Bytes bytes = good;
        damage(bytes);
        EXPECT_EQ(verdict(bytes), std::to_string(offset) + " " + text);
    }
}

TEST(MovieCheck, ChecksBothModesTitlesAndEmptyMovies) {
    MovieParameters narrow = golden::parameters();
    narrow.qlMode = 4;
    narrow.width = 5;  // stored with a width of eight pixels
    Bytes frame(32 + 8 * 4);
    std::ranges::copy(Bytes{1, 0, 0, 0, 0, 8, 0, 8, 0, 0, 0, 0, 0, 0, 0, 20}, frame.begin());
    const auto place = [](std::size_t inRecord) { return std::to_string(firstFrame + 4 + inRecord) + " "; };
    EXPECT_EQ(verdict(movie(narrow, frame)), "right 2");
    EXPECT_EQ(verdict(movie(narrow)), place(0) + "frame 0 is not of Mode 4");
    frame[3] = 0x20;
    EXPECT_EQ(verdict(movie(narrow, frame)), place(3) + "frame 0 is not stored as movies store frames");
    frame[3] = 0;
    narrow.width = 9;
    EXPECT_EQ(verdict(movie(narrow, frame)), place(0) + "frame 0 is 8x8 pixels, not 9x8");
    EXPECT_TRUE(
        verdict(movie(narrow, Bytes(24))).starts_with(place(0) + "frame 0 cannot be decoded: payload="));

    // Raw pixels without a sprite can be shown, but are not valid in a movie. The first frame has an extra
    // byte.
    MovieParameters pixel = golden::parameters();
    pixel.width = 2;
    pixel.height = 1;
    EXPECT_EQ(verdict(movie(pixel, {9, 9, 9})), place(0) + "frame 0 is not of Mode 32");
    EXPECT_EQ(verdict(movie(pixel, {9, 32, 9})), place(3) + "frame 0 is not stored as movies store frames");

    MovieParameters even = golden::parameters();
    even.title = "QL";
    EXPECT_EQ(verdict(movie(even)), "right 2");
    even.title = std::string(257, 'x');
    EXPECT_EQ(verdict(movie(even)), "right 2");

    Bytes empty = golden::movie();
    empty.resize(golden::firstBlock);
    std::fill(empty.begin() + golden::totalFrames, empty.begin() + golden::totalFrames + 8, std::uint8_t{0});
    std::fill(empty.begin() + index, empty.end(), std::uint8_t{0});
    EXPECT_EQ(verdict(empty), "right 0");
    empty[golden::totalFrames] = 1;
    EXPECT_EQ(verdict(empty), std::to_string(fields + 12) + " the movie was never finished");
    empty[golden::totalFrames] = 0;
    empty.push_back(0);
    EXPECT_EQ(verdict(empty), std::to_string(fields + 12) + " the movie was never finished");
}

TEST(MovieCheck, StopsAtAnyFrameWhenCancelled) {
    const Bytes good = movie();
    for (int frames = 0; frames <= fps * seconds; ++frames) {
        int asked = 0;
        const MovieCheck result = check(good, [&] { return ++asked > frames; });
        EXPECT_EQ(result.isCancelled, frames < fps * seconds);
        EXPECT_EQ(result.seconds, frames / fps);
        EXPECT_FALSE(result.fault);
        EXPECT_EQ(result.header.title, "QL!");
    }
}

}  // namespace
}  // namespace zeb
