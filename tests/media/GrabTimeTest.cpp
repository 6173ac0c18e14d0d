#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;
using test::h264;
using test::images;
using test::numberAt;
using test::numberedFrames;

/// The time from which a number is on screen. Lists are in ascending order.
struct Shown {
    double time;
    int number;
};

std::vector<Shown> steady(int count, double period, double start = 0, int firstNumber = 0) {
    std::vector<Shown> shown;
    for (int i = 0; i < count; ++i)
        shown.push_back({start + i * period, firstNumber + i});
    return shown;
}

/// Compares grabbed pictures with the expected ones: in order, with a schedule, and in random order.
void expectShown(const std::string& path, const std::vector<Shown>& shown) {
    SCOPED_TRACE(path);
    const auto expectedAt = [&](double time) {
        int number = shown.front().number;
        for (const Shown& s : shown)
            number = s.time <= time ? s.number : number;
        return number;
    };
    // Times that distinguish neighbouring pictures: at the start of a picture (which containers may have
    // rounded), in its middle and shortly before its end.
    std::vector<double> times;
    if (shown[0].time > 0.01) times = {0, shown[0].time / 2, shown[0].time - 0.004};
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const double length = i + 1 < shown.size() ? shown[i + 1].time - shown[i].time : 0.03;
        for (const double t : {0.0, length / 2, length - 0.004})
            times.push_back(shown[i].time + t);
    }
    for (const int threads : {1, 3}) {
        const auto generator = images(path, threads);
        for (const double time : times)
            ASSERT_EQ(numberAt(*generator, time), expectedAt(time)) << threads << " threads, at " << time;
    }
    for (const int perSecond : {1, 3, 10, 25}) {
        const auto generator = images(path);
        const double last = shown.back().time + 0.02;
        const GrabSchedule schedule{static_cast<std::int64_t>(std::ceil(last)) * perSecond, perSecond, last};
        generator->expect(schedule);
        for (std::int64_t i = 0; i < schedule.count; ++i) {
            const double time = schedule.at(i).seconds();
            ASSERT_EQ(numberAt(*generator, time), expectedAt(time + 0.001))
                << "planned, " << perSecond << " per second, at " << time;
        }
    }
    const auto generator = images(path);
    std::mt19937 random(1);
    for (int i = 0; i < 30; ++i) {
        const double time = times[random() % times.size()];
        ASSERT_EQ(numberAt(*generator, time), expectedAt(time)) << "jumping, at " << time;
    }
}

class GrabsInContainer : public testing::TestWithParam<const char*> {};

TEST_P(GrabsInContainer, ShowPictureOnScreenAtAnyTime) {
    expectShown(test::numberedFilm(GetParam()), steady(100, 0.04));
}

INSTANTIATE_TEST_SUITE_P(, GrabsInContainer,
                         testing::Values("h264.mp4", "open.mp4", "h265.mp4", "fragments.mp4", "mpeg4.mp4",
                                         "h264.mkv", "open.mkv", "h265.mkv", "vp8.webm", "vp9.webm",
                                         "h264.avi", "mpeg4.avi", "h264.flv", "h264.ts", "open.ts", "h265.ts",
                                         "mpeg2.ts", "mpeg2.mpg", "h264.h264", "h265.hevc", "mpeg2.m2v",
                                         "mjpeg.mov", "mjpeg.avi", "ffv1.nut", "wmv2.asf"));

TEST(GrabTimes, StartAtContainerStartTime) {
    // `start` is the container's time of the first picture.
    for (const auto& [container, start] : {std::pair{"mkv", "59857"},
                                           {"ts", "10"},
                                           {"ts", "59857"},
                                           {"mpg", "1.5"},
                                           {"mp4", "1.5"},
                                           {"flv", "10"}}) {
        const std::string coding =
            std::string(container) == "mpg" ? "-c:v mpeg2video -g 12 -bf 2 -b:v 2M" : h264;
        const std::string shift = std::string(" -output_ts_offset ") + start + " -avoid_negative_ts disabled";
        const std::string path =
            clip(std::string("start-") + start + "." + container, numberedFrames(50) + coding + shift);
        expectShown(path, steady(50, 0.04));
        EXPECT_NEAR(test::open(path)->duration(), 2, 0.05) << path;
    }
}

TEST(GrabTimes, FollowEditLists) {
    // A copied cut within a group: the file contains pictures before the cut, which an edit list hides.
    test::numberedFilm("h264.mp4");
    const std::string cut =
        clip("edits-cut.mp4", "-ss 1.32 -i @h264.mp4 -c copy -avoid_negative_ts disabled");
    expectShown(cut, steady(100 - 33, 0.04, 0, 33));
    EXPECT_NEAR(test::open(cut)->duration(), 4 - 1.32, 0.03);
    // An empty edit delays the pictures relative to the sound.
    const std::string late = clip("edits-late.mp4",
                                  "-itsoffset 0.7 -i @h264.mp4 -f lavfi -i sine=d=4 "
                                  "-map 0 -map 1 -c:v copy -c:a aac");
    expectShown(late, steady(100, 0.04, 0.7));
    // The two edits of `late` (an empty one and the whole video) are replaced by two parts: pictures 10 ...
    // 29 and 73 ... 92, each starting within a group of 20.
    std::string film = test::contents(late);
    const std::size_t list = film.find("elst");
    std::uint32_t delay = 0;
    for (const char c : film.substr(list + 28, 4))
        delay = delay << 8 | static_cast<unsigned char>(c);
    std::string edits;
    for (const std::uint32_t first : {10U, 73U}) {
        // 25 pictures per second, in units of 1/1000 s and 1/12800 s.
        for (const std::uint32_t value : {800U, delay + first * 512, 0x10000U}) {
            for (const int shift : {24, 16, 8, 0})
                edits += static_cast<char>(value >> shift);
        }
    }
    film.replace(list + 12, 24, edits);
    const std::string path = test::stored("edits-many.mp4", film);
    // The demuxer is off by one picture where the two parts meet, but the first part is exact. The planner
    // sees hidden packets of the second part at times of the first; this must not change the pictures.
    const auto inOrder = images(path);
    for (int i = 0; i < 18; ++i)
        ASSERT_EQ(numberAt(*inOrder, i * 0.04), 10 + i);
    for (const int perSecond : {3, 10, 25}) {
        const auto straight = images(path, 1), planned = images(path);
        const GrabSchedule schedule{2 * perSecond, perSecond, 1.58};
        planned->expect(schedule);
        for (std::int64_t i = 0; i < schedule.count; ++i) {
            const double time = schedule.at(i).seconds();
            ASSERT_EQ(numberAt(*planned, time), numberAt(*straight, time)) << perSecond << ", at " << time;
        }
    }
}

TEST(GrabTimes, FollowVariableRates) {
    // Picture n is at (n + n^2 / 40) / 25 seconds, so the rate falls from 25 to 7 per second.
    std::vector<Shown> shown;
    for (int n = 0; n < 50; ++n)
        shown.push_back({(n + std::floor(n * n / 40.0)) / 25.0, n});
    const std::string film = numberedFrames(50) + h264 + "-vf setpts=N+floor(N*N/40) -fps_mode passthrough";
    for (const char* name : {"variable.mp4", "variable.mkv", "variable.ts", "variable.flv"})
        expectShown(clip(name, film), shown);
}

TEST(GrabTimes, TolerateRoundedContainerTimes) {
    // 24 pictures per second are not at whole milliseconds. A grab at k / 24 must still show picture k.
    for (const char* name : {"rounded.mkv", "rounded.flv", "rounded.mp4"}) {
        const auto generator = images(clip(name, numberedFrames(72, "24") + h264));
        const GrabSchedule schedule{72, 24, 3};
        generator->expect(schedule);
        for (int i = 0; i < 72; ++i)
            ASSERT_EQ(test::numberIn(*generator->copyImage(schedule.at(i))), i) << name;
    }
}

TEST(GrabTimes, ShowLateFirstPictureFromStart) {
    const std::string film =
        "-itsoffset 0.5 " + numberedFrames(25, "10") + "-f lavfi -i sine=d=3 -map 0 -map 1 -c:a aac " + h264;
    for (const char* name : {"late.mkv", "late.ts", "late.mp4"}) {
        const auto generator = images(clip(name, film));
        generator->expect({30, 10, 2.9});
        for (const double time : {0.0, 0.2, 0.5})
            EXPECT_EQ(numberAt(*generator, time), 0) << name;
        // The encoder delay of the sound may shift the start by up to two packets.
        EXPECT_EQ(numberAt(*generator, 1.57), 10) << name;
    }
}

constexpr int group = 25;

std::string searchableFilm(const std::string& name) {
    return clip(name, numberedFrames(100) + "-c:v libx264 -bf 2 -g 25 -sc_threshold 0");
}

double middleOf(int picture) {
    return (picture + 0.5) / 25;
}

TEST(NearbyImage, IsNearestPictureWithinDecodingLimit) {
    for (const std::string name : {"near.mp4", "near.mkv"}) {
        const auto generator = images(searchableFilm(name));
        const auto numberNear = [&](int wanted, int pictures) {
            return test::numberIn(*generator->copyNearbyImage(test::at(middleOf(wanted)), pictures).picture);
        };
        for (const int wanted : {30, 3, 60, 74, 75, 99, 0}) {
            SCOPED_TRACE(name + ", at " + std::to_string(wanted));
            const int key = wanted / group * group;
            const TimedPicture found = generator->copyNearbyImage(test::at(middleOf(wanted)), 1);
            EXPECT_EQ(test::numberIn(*found.picture), key);
            EXPECT_NEAR(found.time, key / 25.0, 0.002);
            if (wanted - key >= 2) {
                EXPECT_EQ(generator->copyNearbyImage(test::at(middleOf(wanted) + 0.01), 1).picture,
                          found.picture);
            }
            const int further = numberNear(wanted, 9);
            EXPECT_LE(further, wanted);
            EXPECT_GE(further, std::min(wanted, key + 6));
            EXPECT_EQ(numberNear(wanted, group + 10), wanted);
        }
        // Exact grabs are not affected.
        for (const int wanted : {40, 41, 2, 90}) {
            EXPECT_EQ(numberAt(*generator, middleOf(wanted)), wanted) << name;
            generator->copyNearbyImage(test::at(1), 1);
        }
    }
}

TEST(NearbyImage, WorksForSourcesWithoutSeeking) {
    const auto generator = images(searchableFilm("near.h264"), 1);
    for (const int wanted : {10, 30, 60, 99, 1, 30}) {
        const TimedPicture found = generator->copyNearbyImage(test::at(middleOf(wanted)), 1);
        EXPECT_EQ(test::numberIn(*found.picture), wanted / group * group);
        if (wanted == 99) {
            EXPECT_EQ(numberAt(*generator, middleOf(1)), 1);
        }
    }
}

TEST(NearbyImage, IsNeverDamaged) {
    const std::string whole = clip("near-intra.mkv", numberedFrames(100) + "-c:v mpeg4 -q:v 2 -g 25");
    std::string bytes = test::contents(whole);
    for (std::size_t i = bytes.size() / 3; i < bytes.size() * 2 / 3; i += 7)
        bytes[i] ^= 0x55;
    const auto generator = images(test::stored("near-damaged.mkv", bytes));
    int found = 0, failed = 0;
    for (double time = 0.02; time < 4; time += 0.2) {
        try {
            const TimedPicture nearby = generator->copyNearbyImage(test::at(time), 5);
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
