#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Clips.h"

namespace zeb {
namespace {

using test::stored;

constexpr std::size_t failed = 0;

/// A digest of each grabbed picture of 4 seconds, or `failed`.
std::vector<std::size_t> grabs(const std::string& path, int threads, int perSecond, bool isPlanned) {
    const auto generator = test::images(path, threads);
    const GrabSchedule schedule{4 * perSecond, perSecond, 3.99};
    if (isPlanned) generator->expect(schedule);
    std::vector<std::size_t> result;
    for (std::int64_t i = 0; i < schedule.count; ++i) {
        try {
            const auto pixels = test::draw(*generator->copyImage(schedule.at(i)), 64, 32).bytes;
            result.push_back(std::hash<std::string>()({pixels.begin(), pixels.end()}) | 1);
        } catch (const MediaError& error) {
            EXPECT_EQ(error.code(), MediaError::cannotDecode);
            result.push_back(failed);
        }
    }
    return result;
}

class DamagedFilm : public testing::TestWithParam<std::string> {};

/// Bits are inverted in the middle third of a video. The pictures must be the same for any number of threads
/// and in every run, and correct before and after the damage.
TEST_P(DamagedFilm, LooksSameForAnyThreadCount) {
    const std::string whole = test::contents(test::numberedFilm(GetParam()));
    const std::vector<std::size_t> expected = grabs(test::numberedFilm(GetParam()), 1, 25, false);
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        std::string bytes = whole;
        std::mt19937 random(seed);
        for (unsigned i = 0; i < 3 * seed; ++i)
            bytes[bytes.size() / 3 + random() % (bytes.size() / 4)] ^= static_cast<char>(1 << random() % 8);
        const std::string path = stored("damaged-" + GetParam(), bytes);
        const auto alone = grabs(path, 1, 25, false), planned = grabs(path, 1, 10, true);
        // The H.265 decoder may end a slice early without an error. The rest of the picture is then old
        // buffer content, which depends on the threads.
        for (const int threads : {2, 4, 4}) {
            if (GetParam() == "h265.mkv") continue;
            EXPECT_TRUE(grabs(path, threads, 25, false) == alone) << threads << " threads";
            EXPECT_TRUE(grabs(path, threads, 10, true) == planned) << threads << " threads";
        }
        const auto unplanned = grabs(path, 2, 10, false);
        std::size_t differences = 0;
        for (std::size_t i = 0; i < planned.size(); ++i)
            differences += planned[i] != unplanned[i];
        EXPECT_LE(differences, planned.size() / 3);
        EXPECT_TRUE(std::equal(alone.begin(), alone.begin() + 20, expected.begin())) << "the start is sound";
        EXPECT_TRUE(std::equal(alone.end() - 15, alone.end(), expected.end() - 15))
            << "the end is sound again";
    }
}

INSTANTIATE_TEST_SUITE_P(, DamagedFilm,
                         testing::Values("h264.mp4", "h264.ts", "h264.avi", "open.mkv", "h265.mkv",
                                         "mpeg2.ts", "mpeg4.mp4", "mpeg4.avi", "vp8.webm", "vp9.webm"));

/// Overwrites the next picture of an AVI file, starting at `from`. Returns its offset, or `npos` after the
/// last one.
std::size_t ruinNextPicture(std::string& film, std::size_t from) {
    const std::size_t packet = film.find("00dc", from);
    if (packet > film.find("idx1")) return std::string::npos;
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(film[packet + 4 + i]); };
    film.replace(packet + 8, byte(0) | byte(1) << 8u | byte(2) << 16u,
                 byte(0) | byte(1) << 8u | byte(2) << 16u, '\0');
    return packet + 8;
}

TEST(Damage, LostPictureFailsAtItsTimeOnly) {
    // Every picture is a key frame. The 30th packet is overwritten.
    const std::string path = test::numberedFilm("mjpeg.avi");
    std::string bytes = test::contents(path);
    std::size_t packet = bytes.find("movi");
    for (int i = 0; i < 30; ++i)
        packet = bytes.find("00dc", packet + 4);
    ruinNextPicture(bytes, packet + 4);
    auto expected = grabs(path, 1, 25, false);
    expected[30] = failed;
    for (const bool isPlanned : {false, true}) {
        for (const int threads : {1, 3})
            EXPECT_EQ(grabs(stored("lost.avi", bytes), threads, 25, isPlanned), expected)
                << isPlanned << threads;
    }
    for (packet = bytes.find("movi"); packet != std::string::npos;)
        packet = ruinNextPicture(bytes, packet);
    EXPECT_EQ(grabs(stored("ruined.avi", bytes), 2, 2, false), std::vector<std::size_t>(8, failed));
}

}  // namespace
}  // namespace zeb
