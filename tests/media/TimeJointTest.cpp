#include "media/demuxing/TimeJoints.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Clips.h"

namespace zeb {
namespace {

using ffmpeg::PlacedPacket;
using ffmpeg::TimeJointFinder;
using ffmpeg::TimeJoints;
using test::clip;
using test::numberedFrames;

constexpr int video = 0, sound = 1;

/// Packets of a stream, 10 per second and 100 bytes each. In the file, `sound` packets are 50 bytes later.
std::vector<PlacedPacket> run(int stream, int firstPlace, double from, int count) {
    std::vector<PlacedPacket> packets;
    for (int i = 0; i < count; ++i) {
        const double time = from + i * 0.1;
        packets.push_back({stream, (firstPlace + i) * 100 + stream * 50, time, time, time + 0.1});
    }
    return packets;
}

TimeJoints jointsOf(const std::vector<std::vector<PlacedPacket>>& runs) {
    TimeJointFinder finder(video);
    for (const auto& packets : runs) {
        for (const PlacedPacket& packet : packets)
            finder.add(packet);
    }
    return finder.joints();
}

TEST(TimeJointFinder, DistinguishesRestartsStrayTimesAndPauses) {
    struct Case {
        const char* name;
        std::vector<std::vector<PlacedPacket>> runs;
        std::vector<std::pair<std::int64_t, double>> joints;
    };
    const double wrap = 95443.7;
    for (const Case& c : {
             Case{"steady", {run(video, 0, 1, 30), run(sound, 0, 1, 30)}, {}},
             Case{"again from the start", {run(video, 0, 1, 30), run(video, 30, 1, 30)}, {{3000, 3}}},
             Case{"twice",
                  {run(video, 0, 1, 30), run(video, 30, 1, 20), run(video, 50, 2, 20)},
                  {{3000, 3}, {5000, 4}}},
             Case{"far ahead", {run(video, 0, 1, 30), run(video, 30, wrap, 30)}, {{3000, 4 - wrap}}},
             Case{"short parts", {run(video, 0, 1, 4), run(video, 4, 1, 4)}, {{400, 0.4}}},
             Case{"a pause", {run(video, 0, 1, 30), run(video, 30, 13.8, 30)}, {}},
             Case{"a longer pause", {run(video, 0, 1, 30), run(video, 30, 14.2, 30)}, {{3000, 4 - 14.2}}},
             Case{"slight disorder", {run(video, 0, 1, 30), run(video, 30, 3.81, 30)}, {}},
             Case{"one stray", {run(video, 0, 1, 30), run(video, 30, 900, 1), run(video, 31, 4.1, 9)}, {}},
             Case{"two strays",
                  {run(video, 0, 1, 30), run(video, 30, 900, 1), run(video, 31, 2000, 1),
                   run(video, 32, 4.2, 9)},
                  {}},
             Case{"sound alone", {run(sound, 0, 1, 30), run(sound, 30, 1, 30), run(video, 0, 1, 60)}, {}},
             // The first part's sound is longer. The second part's sound starts earlier and precedes its
             // pictures in the file.
             Case{
                 "with sound",
                 {run(video, 0, 1, 30), run(sound, 0, 1, 34), run(video, 41, 1, 30), run(sound, 40, 0.9, 34)},
                 {{4050, 3.5}}},
         }) {
        const TimeJoints joints = jointsOf(c.runs);
        ASSERT_EQ(joints.size(), c.joints.size()) << c.name;
        for (std::size_t i = 0; i < joints.size(); ++i) {
            EXPECT_EQ(joints[i].position, c.joints[i].first) << c.name;
            EXPECT_NEAR(joints[i].shift, c.joints[i].second, 1e-9) << c.name;
        }
    }
}

/// A video of 3 s. Its sound is silent in the first half.
std::string part(const std::string& name, const std::string& options) {
    return test::contents(clip(name, numberedFrames(75) +
                                         "-f lavfi -i aevalsrc=0.5*sin(3000*t)*gte(t\\,1.5):d=3:s=48000 " +
                                         "-map 0 -map 1 -g 15 " + options));
}

/// Times in seconds at which the sound becomes loud or silent.
std::vector<double> turns(const MediaAsset& asset) {
    const auto reader = asset.makeSoundReader(0, {});
    EXPECT_TRUE(reader->startReading());
    std::vector<float> samples;
    while (const auto buffer = reader->copyNextSampleBuffer())
        samples.insert(samples.end(), buffer->samples.begin(), buffer->samples.end());
    std::vector<double> found;
    constexpr std::size_t step = 480;
    for (std::size_t i = 0; i + step <= samples.size(); i += step) {
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(i);
        const bool isLoud = *std::max_element(begin, begin + step) > 0.2F;
        if (isLoud == (found.size() % 2 == 0)) found.push_back(static_cast<double>(i) / 48000);
    }
    return found;
}

TEST(JoinedRecordings, PlayAllPicturesWithTheirSound) {
    const std::string mpeg4 = test::h264 + "-c:a aac ", mpeg2 = "-c:v mpeg2video -bf 2 -b:v 2M -c:a mp2 ";
    const struct {
        std::string name, first, second;
    } cases[] = {
        {"joined.ts", part("part.ts", mpeg4), part("part.ts", mpeg4)},
        {"joined-2.ts", part("part-2.ts", mpeg2), part("part-2.ts", mpeg2)},
        {"joined.m2ts", part("part.m2ts", mpeg4), part("part.m2ts", mpeg4)},
        {"joined.mpg", part("part.mpg", mpeg2), part("part.mpg", mpeg2)},
        {"later.ts", part("part.ts", mpeg4), part("later-part.ts", mpeg4 + "-output_ts_offset 5000")},
        {"earlier.ts", part("later-part.ts", mpeg4 + "-output_ts_offset 5000"), part("part.ts", mpeg4)},
        // The 33-bit clock overflows within the second part.
        {"wrapped.ts", part("part.ts", mpeg4), part("wrap-part.ts", mpeg4 + "-output_ts_offset 95441")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto alone = test::open(test::stored("alone-" + c.name, c.first));
        const auto asset = test::open(test::stored(c.name, c.first + c.second));
        const double start = asset->duration() - alone->duration();
        EXPECT_NEAR(start, 3, 0.12);
        EXPECT_NEAR(asset->videoTracks().at(0).end.time, start + alone->videoTracks().at(0).end.time, 0.05);

        std::vector<int> expected, numbers;
        const auto images = asset->makeImageGenerator(2, {});
        images->expect({160, 25, 6.3});
        for (int i = 0; i < 160; ++i) {
            const int number = test::numberAt(*images, i / 25.0);
            if (numbers.empty() || numbers.back() != number) numbers.push_back(number);
        }
        for (int i = 0; i < 150; ++i)
            expected.push_back(i % 75);
        EXPECT_EQ(numbers, expected);
        // Seeking back and forth: the times are not monotonic, so the file is read again.
        const double late = start + 2.02;
        const int there = test::numberAt(*images, late);
        EXPECT_NEAR(there, 50, 4);
        EXPECT_NEAR(test::numberAt(*images, 1.02), 25, 4);
        EXPECT_EQ(test::numberAt(*images, late), there);

        const std::vector<double> once = turns(*alone), twice = turns(*asset);
        ASSERT_GE(once.size(), 1U);
        ASSERT_GE(twice.size(), 3U);
        EXPECT_NEAR(twice[2] - twice[0], start, 0.03) << "sound in step with the pictures";
    }
}

}  // namespace
}  // namespace zeb
