#include <gmock/gmock.h>

#include <utility>
#include <vector>

#include "conversion/export/ExportError.h"
#include "conversion/export/FrameScaling.h"
#include "conversion/plan/AudioTrack.h"
#include "conversion/sound/SoundBytes.h"
#include "conversion/sound/WAVFile.h"
#include "tests/doubles/CountingFile.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::EndsWith;

/// Pixels whose components are value, value + 1, value + 2 and value + 3.
FrameImage imageOf(int width, int height, const Bytes& values) {
    FrameImage image{width, height, {}};
    for (const std::uint8_t value : values)
        for (int component = 0; component < 4; ++component)
            image.pixels.push_back(static_cast<std::uint8_t>(value + component));
    return image;
}

TEST(ReducedImage, AveragesPixelsUnderEachTarget) {
    const struct {
        int width, height;
        Bytes values;
        int longestSide, reducedWidth, reducedHeight;
        Bytes expected;
    } cases[] = {
        {2, 1, {10, 20}, 2, 2, 1, {10, 20}},
        {2, 1, {10, 21}, 1, 1, 1, {16}},  // rounded half up
        {3, 1, {0, 30, 90}, 2, 2, 1, {10, 70}},
        {1, 3, {0, 30, 90}, 2, 1, 2, {10, 70}},
        {5, 1, {0, 10, 20, 30, 40}, 3, 3, 1, {4, 20, 36}},
        {4, 2, {0, 8, 40, 48, 16, 24, 56, 64}, 2, 2, 1, {12, 52}},
        {2, 4, {0, 8, 16, 24, 40, 48, 56, 64}, 2, 1, 2, {12, 52}},
    };
    for (const auto& c : cases) {
        const FrameImage reduced = reducedImage(imageOf(c.width, c.height, c.values), c.longestSide);
        EXPECT_EQ(std::pair(reduced.width, reduced.height), std::pair(c.reducedWidth, c.reducedHeight));
        EXPECT_EQ(reduced.pixels, imageOf(c.reducedWidth, c.reducedHeight, c.expected).pixels)
            << c.width << " x " << c.height << " to " << c.longestSide;
    }
}

TEST(AudioTrackText, NamesOnlyKnownProperties) {
    const std::pair<std::optional<double>, const char*> rates[] = {
        {{}, ""},          {0, ""},           {-1, ""},           {0.6, "1 Hz"},
        {999.4, "999 Hz"}, {1000, "1.0 kHz"}, {44100, "44.1 kHz"}};
    for (const auto& [rate, text] : rates)
        EXPECT_EQ(sampleRateText(rate), text);
    const std::pair<std::uint32_t, const char*> codes[] = {
        {0x61616320, "aac "},       {0x7E202020, "~   "},       {0x1F414243, "0x1F414243"},
        {0x4142437F, "0x4142437F"}, {0x41FF4344, "0x41FF4344"}, {0x09ABCDEF, "0x09ABCDEF"}};
    for (const auto& [code, text] : codes)
        EXPECT_EQ(fourCCText(code), text);
    const std::pair<SoundTrack, const char*> tracks[] = {
        {{}, " 3"},
        {{{}, 0, {}}, " 3"},
        {{{}, 1, {}}, " 3 · Mono"},
        {{{}, 2, {}}, " 3 · Stereo"},
        {{48000, 6, 0x61616320}, " 3 · 6ch · 48.0 kHz · aac "}};
    for (const auto& [track, text] : tracks)
        EXPECT_THAT(audioTrackLabel(track, 2), EndsWith(text));
    const auto labels = audioTracks({{{}, 1, {}}, {{}, 2, {}}});
    ASSERT_EQ(labels.size(), 2U);
    EXPECT_EQ(labels[1].index, 1);
    EXPECT_THAT(labels[1].label, EndsWith(" 2 · Stereo"));
}

TEST(AudioSlice, IsFilledUpWithSilence) {
    SoundBytes sound;
    sound.append(Bytes{1, 2, 3, 4, 5});
    EXPECT_EQ(audioSlice(0, 1, 2, sound), (Bytes{1, 2}));
    EXPECT_EQ(audioSlice(2, 2, 2, sound), (Bytes{5, 0x80}));
    for (const std::int64_t second : {std::int64_t{3}, std::int64_t{1} << 62})
        EXPECT_EQ(audioSlice(second, 1, 2, sound), (Bytes{0x80, 0x80}));
    EXPECT_EQ(audioSlice(0, 0, 2, sound), Bytes());
    EXPECT_EQ(audioSlice(0, 1, 0, sound), Bytes());
}

TEST(WAVFile, CountsBytesAndPaddingInHeader) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{4}}) {
        test::MemoryDisk disk;
        test::MemoryWritableFile file(disk);
        WAVFile wav(file, 1, 20000);
        wav.add(Bytes(size, 'x'));
        EXPECT_EQ(wav.bytesWritten(), 44 + size);
        wav.finish();
        const std::size_t padded = (size + 1) / 2 * 2;
        ASSERT_EQ(disk.bytes.size(), 44 + padded);
        EXPECT_EQ(disk.bytes[4], 36 + padded);
        EXPECT_EQ(disk.bytes[40], size);
        EXPECT_EQ(Bytes(disk.bytes.begin() + 44, disk.bytes.end()),
                  size == 3 ? (Bytes{'x', 'x', 'x', 0}) : Bytes(size, 'x'));
    }
}

TEST(WAVFile, EndsAtLimitOfSizeFields) {
    constexpr std::uint64_t most = 0xFFFFFFFF - 36 - 1;  // leaves room for a padding byte
    const std::uint8_t byte = 0;
    fake::CountingFile file;
    WAVFile wav(file, 2, 20000);
    wav.add(std::span(&byte, most - 1));
    EXPECT_THROW(wav.add(std::span(&byte, 2)), ExportError);
    wav.add(std::span(&byte, 1));
    EXPECT_THROW(wav.add(std::span(&byte, 1)), ExportError);
    EXPECT_EQ(file.position, 44 + most);
}

}  // namespace
}  // namespace zeb
