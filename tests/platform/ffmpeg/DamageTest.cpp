#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;
using test::numberedFrames;

constexpr std::size_t failed = 0;

std::size_t digest(const Picture& picture) {
    const auto pixels = test::draw(picture, 64, 32);
    return std::hash<std::string>()(std::string(pixels.begin(), pixels.end())) | 1;
}

/// What every grab shows, as a digest, or `failed`.
std::vector<std::size_t> grabs(const std::string& path, int threads, int perSecond, bool isPlanned) {
    const auto asset = test::open(path);
    const auto generator = asset->makeImageGenerator(threads, {});
    const GrabSchedule schedule{4 * perSecond, perSecond, 3.99};
    if (isPlanned) generator->expect(schedule);
    std::vector<std::size_t> result;
    for (std::int64_t i = 0; i < schedule.count; ++i) {
        try {
            result.push_back(digest(*generator->copyImage(schedule.at(i))));
        } catch (const MediaError& error) {
            EXPECT_EQ(error.code(), MediaError::cannotDecode);
            result.push_back(failed);
        }
    }
    return result;
}

std::size_t differences(const std::vector<std::size_t>& a, const std::vector<std::size_t>& b) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        count += a[i] != b[i];
    return count;
}

struct Case {
    const char* name;
    const char* coding;
    /// The decoder may end a slice early without a word; the rest of the picture is then what its buffer
    /// held, which depends on the threads.
    bool mayGoUnnoticed = false;
};

void PrintTo(const Case& c, std::ostream* stream) {
    *stream << c.name;
}

class DamagedFilm : public testing::TestWithParam<Case> {};

/// Bits turned over in the middle third of a film: the same pictures however many threads decode and however
/// often, and sound pictures before and behind.
TEST_P(DamagedFilm, LooksTheSameForEveryNumberOfThreads) {
    const std::string name = GetParam().name;
    const std::string sound = clip(name, numberedFrames(100) + GetParam().coding);
    const std::string whole = test::contents(sound);
    const std::vector<std::size_t> expected = grabs(sound, 1, 25, false);
    const std::string path = test::clipFolder() + "/damaged-" + name;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        std::string bytes = whole;
        std::mt19937 random(seed);
        for (unsigned i = 0; i < 3 * seed; ++i) {
            bytes[bytes.size() / 3 + random() % (bytes.size() / 4)] ^= static_cast<char>(1 << random() % 8);
        }
        test::store(path, bytes);
        const std::vector<std::size_t> alone = grabs(path, 1, 25, false);
        const std::vector<std::size_t> planned = grabs(path, 1, 10, true);
        for (const int threads : {2, 4, 4}) {
            if (GetParam().mayGoUnnoticed) continue;
            EXPECT_TRUE(grabs(path, threads, 25, false) == alone)
                << "seed " << seed << ", threads " << threads;
            EXPECT_TRUE(grabs(path, threads, 10, true) == planned)
                << "seed " << seed << ", threads " << threads;
        }
        EXPECT_LE(differences(grabs(path, 2, 10, false), planned), planned.size() / 3)
            << "planned against unplanned";
        EXPECT_TRUE(std::equal(alone.begin(), alone.begin() + 20, expected.begin())) << "the start is sound";
        EXPECT_TRUE(std::equal(alone.end() - 15, alone.end(), expected.end() - 15))
            << "the end is sound again";
    }
}

INSTANTIATE_TEST_SUITE_P(
    , DamagedFilm,
    testing::Values(
        Case{"h264.mp4", "-c:v libx264 -crf 10 -g 20 -bf 3"},
        Case{"h264.ts", "-c:v libx264 -crf 10 -g 20 -bf 3"},
        Case{"h264.avi", "-c:v libx264 -crf 10 -g 20 -bf 2"},
        Case{"open.mkv", "-c:v libx264 -crf 10 -g 20 -x264-params open-gop=1"},
        Case{"h265.mkv", "-c:v libx265 -crf 6 -preset ultrafast -x265-params log-level=none:keyint=20", true},
        Case{"mpeg2.ts", "-c:v mpeg2video -g 12 -bf 2 -b:v 2M"},
        Case{"mpeg4.mp4", "-c:v mpeg4 -g 20 -bf 2 -b:v 2M"}, Case{"mpeg4.avi", "-c:v mpeg4 -g 20 -b:v 2M"},
        Case{"vp8.webm", "-c:v libvpx -g 20 -auto-alt-ref 1 -lag-in-frames 10 -b:v 1M -cpu-used 8"},
        Case{"vp9.webm", "-c:v libvpx-vp9 -cpu-used 8 -deadline realtime -g 20 -b:v 1M"}),
    [](const auto& testCase) {
        std::string name = testCase.param.name;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

TEST(Damage, ALostPictureIsAnErrorForItsMomentOnly) {
    // Every picture stands alone; the 30th packet is overwritten.
    const std::string path = clip("alone.avi", numberedFrames(100) + "-c:v mjpeg -q:v 2");
    std::string bytes = test::contents(path);
    std::size_t packet = bytes.find("movi");
    for (int i = 0; i <= 30; ++i)
        packet = bytes.find("00dc", packet + 4);
    ASSERT_NE(packet, std::string::npos);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(packet) + 8, 1000, '\0');
    const std::string damaged = test::clipFolder() + "/lost.avi";
    test::store(damaged, bytes);
    for (const bool isPlanned : {false, true}) {
        for (const int threads : {1, 3}) {
            const auto shown = grabs(damaged, threads, 25, isPlanned),
                       expected = grabs(path, threads, 25, false);
            for (std::size_t i = 0; i < 100; ++i) {
                EXPECT_EQ(shown[i], i == 30 ? failed : expected[i]) << i << (isPlanned ? " planned" : "");
            }
        }
    }
}

TEST(Damage, RealDamagedClip) {
    ZEB_REAL_CLIP(path, "corrupted.mp4");
    const auto alone = grabs(path, 1, 10, false);
    EXPECT_EQ(alone.size(), 40U);
    const auto lost = std::count(alone.begin(), alone.end(), failed);
    EXPECT_LE(lost, 3);
    EXPECT_NE(alone[0], failed);
    for (const int threads : {2, 4}) {
        EXPECT_EQ(grabs(path, threads, 10, false), alone);
        EXPECT_EQ(grabs(path, threads, 10, true), alone);
    }
}

TEST(Damage, NothingThatCanBeDecodedIsAnError) {
    std::string bytes = test::contents(clip("to-ruin.avi", numberedFrames(30) + "-c:v mjpeg"));
    const auto byte = [&](std::size_t at) {
        return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at]));
    };
    const std::size_t end = bytes.find("idx1");
    for (std::size_t at = bytes.find("00dc", bytes.find("movi")); at < end; at = bytes.find("00dc", at + 4)) {
        const std::size_t size = byte(at + 4) | byte(at + 5) << 8 | byte(at + 6) << 16;
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at) + 8, size, '\0');
    }
    const std::string path = test::clipFolder() + "/ruined.avi";
    test::store(path, bytes);
    const auto generator = test::open(path)->makeImageGenerator(2, {});
    for (const double time : {0.0, 0.5})
        EXPECT_THROW(generator->copyImage(test::at(time)), MediaError);
}

}  // namespace
}  // namespace zeb
