#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "Clips.h"

namespace zeb {
namespace {

using test::at;
using test::clip;
using test::numberedFrames;

constexpr int frames = 100;
constexpr int group = 25;
constexpr double rate = 25;

int numberOf(const TimedPicture& found) {
    return test::numberIn(*found.picture).value_or(-1);
}

TEST(NearbyImage, IsAsNearAsTheDecodedPicturesReach) {
    const std::string coding = numberedFrames(frames) + " -c:v libx264 -bf 2 -g 25 -sc_threshold 0";
    for (const std::string name : {"near.mp4", "near.mkv"}) {
        const auto generator = test::open(clip(name, coding))->makeImageGenerator(2, {});
        for (const int wanted : {30, 3, 60, 74, 75, 99, 0}) {
            const double time = (wanted + 0.5) / rate;
            const TimedPicture key = generator->copyNearbyImage(at(time), 1);
            EXPECT_EQ(numberOf(key), wanted / group * group) << name << ", at " << wanted;
            EXPECT_NEAR(key.time, wanted / group * group / rate, 0.002);
            if (wanted % group >= 2) {
                EXPECT_EQ(generator->copyNearbyImage(at(time + 0.01), 1).picture, key.picture);
            }
            const TimedPicture on = generator->copyNearbyImage(at(time), 9);
            EXPECT_LE(numberOf(on), wanted) << name;
            EXPECT_GE(numberOf(on), std::min(wanted, wanted / group * group + 6)) << name;
            EXPECT_EQ(numberOf(generator->copyNearbyImage(at(time), group + 10)), wanted) << name;
        }
        // Grabs by time are what they always are.
        for (const int wanted : {40, 41, 2, 90}) {
            EXPECT_EQ(test::numberIn(*generator->copyImage(at((wanted + 0.5) / rate))), wanted) << name;
            generator->copyNearbyImage(at(1), 1);
        }
    }
}

TEST(NearbyImage, ComesFromSourcesThatCannotBeSearched) {
    const std::string film =
        clip("near.h264", numberedFrames(frames) + " -c:v libx264 -bf 2 -g 25 -sc_threshold 0");
    const auto generator = test::open(film)->makeImageGenerator(1, {});
    int last = 0;
    for (const int wanted : {10, 30, 60, 99}) {
        const int found = numberOf(generator->copyNearbyImage(at((wanted + 0.5) / rate), 1));
        EXPECT_EQ(found, wanted / group * group);
        EXPECT_GE(found, last);
        last = found;
    }
    EXPECT_EQ(test::numberIn(*generator->copyImage(at(1.5 / rate))), 1);
    EXPECT_EQ(numberOf(generator->copyNearbyImage(at(30.5 / rate), 1)), 25);
}

TEST(NearbyImage, IsNoDamagedOne) {
    const std::string film = clip("near-intra.mkv", numberedFrames(frames) + " -c:v mpeg4 -q:v 2 -g 25");
    std::string bytes = test::contents(film);
    for (std::size_t i = bytes.size() / 3; i < bytes.size() * 2 / 3; ++i)
        bytes[i] = static_cast<char>(bytes[i] ^ (i % 7 == 0 ? 0x55 : 0));
    const std::string damaged = test::clipFolder() + "/near-damaged.mkv";
    test::store(damaged, bytes);
    const auto generator = test::open(damaged)->makeImageGenerator(2, {});
    int found = 0, failed = 0;
    for (double time = 0.02; time < 4; time += 0.2) {
        try {
            const int number = numberOf(generator->copyNearbyImage(at(time), 5));
            EXPECT_LE(number, static_cast<int>(time * rate) + 1);
            ++found;
        } catch (const MediaError& error) {
            EXPECT_EQ(error.code(), MediaError::cannotDecode);
            ++failed;
        }
    }
    EXPECT_GT(found, 0);
    EXPECT_GT(failed, 0);

    bool isStopping = false;
    const auto stopped = test::open(film)->makeImageGenerator(1, [&] { return isStopping; });
    isStopping = true;
    try {
        stopped->copyNearbyImage(at(1), 1);
        FAIL();
    } catch (const MediaError& error) {
        EXPECT_EQ(error.code(), MediaError::interrupted);
    }
}

}  // namespace
}  // namespace zeb
