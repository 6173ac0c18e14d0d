#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "Clips.h"

namespace zeb {
namespace {

using test::at;
using test::clip;
using test::numberedFrames;

/// When which number is on screen, in ascending order.
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

int numberAt(const std::vector<Shown>& shown, double time) {
    int number = shown.front().number;
    for (const Shown& s : shown) {
        if (s.time <= time) number = s.number;
    }
    return number;
}

/// Moments that tell neighbours apart: at the start of pictures (containers may have rounded it), in the
/// middle and shortly before the end.
std::vector<double> moments(const std::vector<Shown>& shown) {
    std::vector<double> times;
    if (shown.front().time > 0.01) times = {0, shown.front().time / 2, shown.front().time - 0.004};
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const double length = i + 1 < shown.size() ? shown[i + 1].time - shown[i].time : 0.03;
        for (const double t : {0.0, length / 2, length - 0.004})
            times.push_back(shown[i].time + t);
    }
    return times;
}

std::string shownAt(ImageGenerator& generator, double time) {
    try {
        const auto number = test::numberIn(*generator.copyImage(at(time)));
        return number ? std::to_string(*number) : "no clear number";
    } catch (const MediaError& error) {
        return error.what();
    }
}

/// Compares what is shown in order, planned, and jumping about, with what should be.
void expectShown(const std::string& path, const std::vector<Shown>& shown) {
    const auto asset = test::open(path);
    const std::vector<double> times = moments(shown);
    for (const int threads : {1, 3}) {
        const auto generator = asset->makeImageGenerator(threads, {});
        for (const double time : times) {
            ASSERT_EQ(shownAt(*generator, time), std::to_string(numberAt(shown, time)))
                << "in order, " << threads << " threads, at " << time;
        }
    }
    for (const int perSecond : {1, 3, 10, 25}) {
        const auto generator = asset->makeImageGenerator(2, {});
        const double last = shown.back().time + 0.02;
        const GrabSchedule schedule{static_cast<std::int64_t>(std::ceil(last)) * perSecond, perSecond, last};
        generator->expect(schedule);
        for (std::int64_t i = 0; i < schedule.count; ++i) {
            const double time = schedule.at(i).seconds();
            ASSERT_EQ(shownAt(*generator, time), std::to_string(numberAt(shown, time + 0.001)))
                << "planned, " << perSecond << " per second, at " << time;
        }
    }
    const auto generator = asset->makeImageGenerator(2, {});
    std::mt19937 random(1);
    for (int i = 0; i < 30; ++i) {
        const double time = times[random() % times.size()];
        ASSERT_EQ(shownAt(*generator, time), std::to_string(numberAt(shown, time))) << "jumping, at " << time;
    }
}

struct Case {
    const char* name;  // the extension picks the container
    const char* arguments;
};

void PrintTo(const Case& c, std::ostream* stream) {
    *stream << c.name;
}

class GrabsInContainer : public testing::TestWithParam<Case> {};

/// 100 pictures at 25 a second in short groups with pictures predicted from later ones, where the coding has
/// them.
TEST_P(GrabsInContainer, ShowWhatIsOnScreen) {
    const std::string path = clip(GetParam().name, numberedFrames(100) + GetParam().arguments);
    expectShown(path, steady(100, 0.04));
}

constexpr const char* h264 = "-c:v libx264 -g 20 -bf 3 -x264-params b-pyramid=normal:scenecut=0";
constexpr const char* h264OpenGroups = "-c:v libx264 -g 20 -bf 3 -x264-params open-gop=1:scenecut=0";
constexpr const char* h265 =
    "-c:v libx265 -preset ultrafast -x265-params log-level=none:keyint=20:bframes=3:b-adapt=0";
constexpr const char* mpeg2 = "-c:v mpeg2video -g 12 -bf 2 -b:v 2M";
constexpr const char* mpeg4 = "-c:v mpeg4 -g 20 -bf 2 -b:v 2M";
constexpr const char* vp8 = "-c:v libvpx -g 20 -auto-alt-ref 1 -lag-in-frames 10 -b:v 1M -cpu-used 8";
constexpr const char* vp9 = "-c:v libvpx-vp9 -cpu-used 8 -deadline realtime -g 20 -b:v 1M";

INSTANTIATE_TEST_SUITE_P(
    , GrabsInContainer,
    testing::Values(Case{"h264.mp4", h264}, Case{"open.mp4", h264OpenGroups}, Case{"h265.mp4", h265},
                    Case{"fragments.mp4", "-c:v libx264 -g 20 -bf 3 -movflags frag_keyframe+empty_moov"},
                    Case{"mpeg4.mp4", mpeg4}, Case{"h264.mkv", h264}, Case{"open.mkv", h264OpenGroups},
                    Case{"h265.mkv", h265}, Case{"vp8.webm", vp8}, Case{"vp9.webm", vp9},
                    Case{"h264.avi", h264}, Case{"mpeg4.avi", mpeg4}, Case{"h264.flv", h264},
                    Case{"h264.ts", h264}, Case{"open.ts", h264OpenGroups}, Case{"h265.ts", h265},
                    Case{"mpeg2.ts", mpeg2}, Case{"mpeg2.mpg", mpeg2}, Case{"raw.h264", h264},
                    Case{"raw.hevc", h265}, Case{"raw.m2v", mpeg2}, Case{"mjpeg.mov", "-c:v mjpeg -q:v 2"},
                    Case{"mjpeg.avi", "-c:v mjpeg"}, Case{"ffv1.nut", "-c:v ffv1"},
                    Case{"wmv2.asf", "-c:v wmv2 -g 20 -b:v 2M"}),
    [](const auto& testCase) {
        std::string name = testCase.param.name;
        for (char& c : name)
            c = c == '.' ? '_' : c;
        return name;
    });

TEST(GrabTimes, StartWhereTheClockStarts) {
    // "start" is where the container's clock stands at the first picture.
    for (const auto& [container, start] : {std::pair{"mkv", "1.5"},
                                           {"mkv", "59857"},
                                           {"ts", "10"},
                                           {"ts", "59857"},
                                           {"mpg", "1.5"},
                                           {"mp4", "1.5"},
                                           {"mp4", "10"},
                                           {"flv", "10"}}) {
        SCOPED_TRACE(std::string(container) + " from " + start);
        const std::string coding = std::string(container) == "mpg" ? mpeg2 : h264;
        const std::string shift =
            std::string(" -output_ts_offset ") + start + " -avoid_negative_ts disabled ";
        const std::string path =
            clip(std::string("start-") + start + "." + container, numberedFrames(50) + coding + shift);
        expectShown(path, steady(50, 0.04));
        EXPECT_NEAR(test::open(path)->duration(), 2, 0.05);
    }
}

TEST(GrabTimes, FollowEditLists) {
    clip("edits-whole.mp4", numberedFrames(100) + h264);
    // A copied cut within a group: the pictures before the cut are in the file, an edit list hides them.
    const std::string cut =
        clip("edits-cut.mp4", "-ss 1.32 -i @edits-whole.mp4 -c copy -avoid_negative_ts disabled");
    expectShown(cut, steady(100 - 33, 0.04, 0, 33));
    EXPECT_NEAR(test::open(cut)->duration(), 4 - 1.32, 0.03);
    // Pictures later than the sound by an empty edit.
    const std::string late = clip("edits-late.mp4",
                                  "-itsoffset 0.7 -i @edits-whole.mp4 -f lavfi -i sine=d=4 "
                                  "-map 0 -map 1 -c:v copy -c:a aac");
    expectShown(late, steady(100, 0.04, 0.7));
}

TEST(GrabTimes, FollowSeveralEdits) {
    // Two stretches of one film: pictures 10 ... 29, then 73 ... 92, each starting within a group of 20.
    const std::string whole = test::contents(clip("edits-many-whole.mp4", numberedFrames(100) + h264));
    const auto number = [](std::uint32_t value) {
        return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                           static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    const std::size_t list = whole.find("elst");
    ASSERT_NE(list, std::string::npos);
    const std::string firstMediaTime = whole.substr(list + 16, 4);
    std::uint32_t delay = 0;
    for (const char c : firstMediaTime)
        delay = delay << 8 | static_cast<unsigned char>(c);
    const auto edit = [&](int first) {  // 25 pictures a second in units of 1/1000 and 1/12800 seconds
        return number(800) + number(delay + static_cast<std::uint32_t>(first) * 512) + number(0x10000);
    };
    std::string edited = whole;
    edited.replace(list + 8, 16, number(2) + edit(10) + edit(73));
    for (const char* box : {"moov", "trak", "edts", "elst"}) {  // the index stands behind the pictures
        const std::size_t size = edited.rfind(box, list) - 4;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8 | static_cast<unsigned char>(edited[size + i]);
        edited.replace(size, 4, number(value + 12));
    }
    const std::string path = test::clipFolder() + "/edits-many.mp4";
    test::store(path, edited);
    // The demuxer is a picture off where one stretch meets the next; the first stretch is exact, and
    // planning, which sees the hidden packets of the second at the times of the first, must not change what
    // is shown.
    const auto inOrder = test::open(path)->makeImageGenerator(2, {});
    for (int i = 0; i < 18; ++i)
        ASSERT_EQ(shownAt(*inOrder, i * 0.04), std::to_string(10 + i));
    for (const int perSecond : {3, 10, 25}) {
        const auto straight = test::open(path)->makeImageGenerator(1, {});
        const auto planned = test::open(path)->makeImageGenerator(2, {});
        const GrabSchedule schedule{2 * perSecond, perSecond, 1.58};
        planned->expect(schedule);
        for (std::int64_t i = 0; i < schedule.count; ++i) {
            const double time = schedule.at(i).seconds();
            ASSERT_EQ(shownAt(*planned, time), shownAt(*straight, time))
                << perSecond << " per second, at " << time;
        }
    }
}

TEST(GrabTimes, FollowVariableRates) {
    // Picture n stands at (n + n^2 / 40) / 25 seconds, so that the rate falls from 25 to 7 a second.
    std::vector<Shown> shown;
    for (int n = 0; n < 50; ++n)
        shown.push_back({(n + std::floor(n * n / 40.0)) / 25.0, n});
    const std::string filter = " -vf setpts=N+floor(N*N/40) -fps_mode passthrough ";
    for (const char* container : {"mp4", "mkv", "ts", "flv"}) {
        SCOPED_TRACE(container);
        expectShown(clip(std::string("variable.") + container, numberedFrames(50) + h264 + filter), shown);
    }
}

TEST(GrabTimes, ForgiveRoundedTimes) {
    // 24 pictures a second do not fall on whole milliseconds: a grab at k / 24 shows picture k all the same.
    for (const char* container : {"mkv", "flv", "mp4"}) {
        SCOPED_TRACE(container);
        const auto asset =
            test::open(clip(std::string("rounded.") + container, numberedFrames(72, "24") + h264));
        const auto generator = asset->makeImageGenerator(1, {});
        const GrabSchedule schedule{72, 24, 3};
        generator->expect(schedule);
        for (int i = 0; i < 72; ++i) {
            ASSERT_EQ(test::numberIn(*generator->copyImage(schedule.at(i))), i) << container;
        }
    }
}

TEST(GrabTimes, ALateFirstPictureIsShownFromTheStart) {
    const std::string input =
        "-itsoffset 0.5 " + numberedFrames(25, "10") + "-f lavfi -i sine=d=3 -map 0 -map 1 ";
    for (const char* container : {"mkv", "ts", "mp4"}) {
        SCOPED_TRACE(container);
        const auto asset = test::open(clip(std::string("late.") + container, input + h264 + " -c:a aac"));
        const auto generator = asset->makeImageGenerator(1, {});
        generator->expect({30, 10, 2.9});
        for (const double time : {0.0, 0.2, 0.5})
            EXPECT_EQ(shownAt(*generator, time), "0");
        // The sound coder's lead-in may count as the start, up to two packets before the sound itself.
        EXPECT_EQ(shownAt(*generator, 1.57), "10");
    }
}

TEST(GrabTimes, RealFilmShowsItsOwnTime) {
    ZEB_REAL_CLIP(path, "sample_with_increasing_timestamps_320w_240h_5s.mp4");
    // 60 pictures a second, all different; in order, planned and one by one after a jump they are the same.
    const auto asset = test::open(path);
    const auto inOrder = asset->makeImageGenerator(2, {}), planned = asset->makeImageGenerator(2, {});
    const GrabSchedule schedule{50, 10, 4.99};
    planned->expect(schedule);
    const auto jumping = asset->makeImageGenerator(1, {});
    for (int i = 0; i < 50; ++i) {
        const auto expected = test::draw(*inOrder->copyImage(schedule.at(i)), 160, 120);
        EXPECT_EQ(test::draw(*planned->copyImage(schedule.at(i)), 160, 120), expected) << i;
        if (i % 7 == 0) {
            jumping->copyImage(at(i < 25 ? 4.9 : 0.1));
            EXPECT_EQ(test::draw(*jumping->copyImage(schedule.at(i)), 160, 120), expected) << i;
        }
    }
}

}  // namespace
}  // namespace zeb
