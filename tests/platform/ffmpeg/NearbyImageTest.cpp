#include <gtest/gtest.h>

#include "Clips.h"

namespace zeb {
namespace {

using test::at;

constexpr int group = 25;

std::string film(const std::string& name) {
    return test::clip(name, test::numberedFrames(100) + "-c:v libx264 -bf 2 -g 25 -sc_threshold 0");
}

double middleOf(int picture) {
    return (picture + 0.5) / 25;
}

TEST(NearbyImage, IsAsNearAsTheDecodedPicturesReach) {
    for (const std::string name : {"near.mp4", "near.mkv"}) {
        const auto generator = test::images(film(name));
        const auto numberNear = [&](int wanted, int pictures) {
            return test::numberIn(*generator->copyNearbyImage(at(middleOf(wanted)), pictures).picture);
        };
        for (const int wanted : {30, 3, 60, 74, 75, 99, 0}) {
            SCOPED_TRACE(name + ", at " + std::to_string(wanted));
            const int key = wanted / group * group;
            const TimedPicture found = generator->copyNearbyImage(at(middleOf(wanted)), 1);
            EXPECT_EQ(test::numberIn(*found.picture), key);
            EXPECT_NEAR(found.time, key / 25.0, 0.002);
            if (wanted - key >= 2) {
                EXPECT_EQ(generator->copyNearbyImage(at(middleOf(wanted) + 0.01), 1).picture, found.picture);
            }
            const int further = numberNear(wanted, 9);
            EXPECT_LE(further, wanted);
            EXPECT_GE(further, std::min(wanted, key + 6));
            EXPECT_EQ(numberNear(wanted, group + 10), wanted);
        }
        // Grabs by time are what they always are.
        for (const int wanted : {40, 41, 2, 90}) {
            EXPECT_EQ(test::numberAt(*generator, middleOf(wanted)), wanted) << name;
            generator->copyNearbyImage(at(1), 1);
        }
    }
}

TEST(NearbyImage, ComesFromSourcesThatCannotBeSearched) {
    const auto generator = test::images(film("near.h264"), 1);
    for (const int wanted : {10, 30, 60, 99, 1, 30}) {
        const TimedPicture found = generator->copyNearbyImage(at(middleOf(wanted)), 1);
        EXPECT_EQ(test::numberIn(*found.picture), wanted / group * group);
        if (wanted == 99) {
            EXPECT_EQ(test::numberAt(*generator, middleOf(1)), 1);
        }
    }
}

TEST(NearbyImage, IsNoDamagedOne) {
    const std::string whole =
        test::clip("near-intra.mkv", test::numberedFrames(100) + "-c:v mpeg4 -q:v 2 -g 25");
    std::string bytes = test::contents(whole);
    for (std::size_t i = bytes.size() / 3; i < bytes.size() * 2 / 3; i += 7)
        bytes[i] ^= 0x55;
    const auto generator = test::images(test::stored("near-damaged.mkv", bytes));
    int found = 0, failed = 0;
    for (double time = 0.02; time < 4; time += 0.2) {
        try {
            const TimedPicture nearby = generator->copyNearbyImage(at(time), 5);
            EXPECT_LE(test::numberIn(*nearby.picture), static_cast<int>(time * 25) + 1);
            ++found;
        } catch (const MediaError& error) {
            EXPECT_EQ(error.code(), MediaError::cannotDecode);
            ++failed;
        }
    }
    EXPECT_GT(found, 0);
    EXPECT_GT(failed, 0);
}

}  // namespace
}  // namespace zeb
