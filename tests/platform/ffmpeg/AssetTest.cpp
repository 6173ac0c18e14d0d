#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;
using test::numberedFrames;

constexpr const char* h264 = " -c:v libx264 -g 20 -bf 3 ";

/// Replaces 32-bit fields of a file in the ISO format that lie `offset` bytes behind the name of a box.
std::string patched(std::string file, const std::string& box, std::size_t offset, std::uint32_t value) {
    for (std::size_t at = file.find(box); at != std::string::npos; at = file.find(box, at + 4)) {
        for (std::size_t i = 0; i < 4; ++i)
            file[at + offset + i] = static_cast<char>(value >> (24 - 8 * i));
    }
    return file;
}

TEST(AssetDuration, IsFoundWhereContainersDoNotTell) {
    const std::string film = numberedFrames(100);
    for (const auto& [name, arguments] : {
             std::pair{"raw.h264", " -c:v libx264 -bf 3 "},
             {"raw.m2v", " -c:v mpeg2video -b:v 2M "},
             {"raw.mjpeg", " -c:v mjpeg "},
             {"live.mkv", " -c:v libx264 -live 1 -f matroska "},
             {"live.flv", " -c:v libx264 -flvflags no_duration_filesize "},
             {"film.ts", " -c:v libx264 "},
             {"film.mpg", " -c:v mpeg2video -b:v 2M "},
             {"film.mp4", " -c:v libx264 "},
             {"film.avi", " -c:v mpeg4 "},
             {"shifted.ts", " -c:v libx264 -output_ts_offset 10 "},
             {"shifted.mkv", " -c:v libx264 -output_ts_offset 1.5 "},
             {"shifted-live.mkv", " -c:v libx264 -output_ts_offset 3000 -live 1 -f matroska "},
         }) {
        EXPECT_NEAR(test::open(clip(name, film + arguments))->duration(), 4, 0.045) << name;
    }
}

TEST(AssetDuration, AbsurdClaimsAreNotBelieved) {
    const std::string fragmented =
        test::contents(clip("honest.mp4", numberedFrames(100) + h264 + "-movflags frag_keyframe+empty_moov"));
    const std::string path = test::clipFolder() + "/lying.mp4";
    for (const std::uint32_t claimed : {144'000'000U, 3'600'000U}) {  // milliseconds
        test::store(path, patched(patched(fragmented, "mvhd", 20, claimed), "tkhd", 24, claimed));
        EXPECT_NEAR(test::open(path)->duration(), 4, 0.045) << claimed;
    }
}

TEST(AssetDuration, CountsSoundThatOutlastsThePictures) {
    const std::string input =
        numberedFrames(50) + " -f lavfi -i sine=d=3.5 -map 0 -map 1 " + h264 + " -c:a aac ";
    for (const char* name : {"long-sound.mp4", "long-sound.mkv", "long-sound.ts"}) {
        EXPECT_NEAR(test::open(clip(name, input))->duration(), 3.5, 0.08) << name;
    }
}

TEST(AssetFrameRate, IsTheAverage) {
    struct Case {
        const char* name;
        const char* rate;
        const char* arguments;
        double expected;
    };
    for (const Case& c : {
             Case{"film-rate.mp4", "24000/1001", "", 23.976},
             Case{"film-rate.mkv", "24000/1001", "", 23.976},
             Case{"film-rate.ts", "24000/1001", "", 23.976},
             Case{"film-rate.h264", "24000/1001", "", 23.976},
             Case{"clock-90000.mp4", "25", "-video_track_timescale 90000", 25},
             Case{"clock-600.mov", "25", "-video_track_timescale 600", 25},
             // Uneven delays: 0, 1, 4, 5, 8, 9 ... fiftieths of a second
             Case{"uneven.mp4", "50", "-vf setpts=2*N-mod(N\\,2) -fps_mode passthrough", 25},
             Case{"nominal-1000.mkv", "1000", "-vf setpts=40*N -fps_mode passthrough", 25},
             Case{"nominal-1000.mp4", "1000", "-vf setpts=40*N -fps_mode passthrough", 25},
             Case{"nominal-1000.avi", "1000", "-vf setpts=40*N -fps_mode passthrough", 25},
             Case{"fast.mp4", "120", "", 120},
         }) {
        const auto asset = test::open(clip(c.name, numberedFrames(100, c.rate) + h264 + c.arguments));
        EXPECT_NEAR(asset->videoTracks().at(0).nominalFrameRate, c.expected, c.expected * 0.02) << c.name;
        EXPECT_NEAR(asset->duration(), 100 / c.expected, 0.06) << c.name;
    }
}

TEST(AssetTracks, CoversAreNotFilms) {
    const std::string picture = clip("cover.png", "-f lavfi -i color=red:s=48x48 -frames:v 1");
    clip("covered-film.mp4", numberedFrames(50) + h264);
    const std::string path = clip("covered.mp4",
                                  "-i @cover.png -i @covered-film.mp4 -map 0 -map 1 -c copy "
                                  "-disposition:v:0 attached_pic");
    const auto asset = test::open(path);
    ASSERT_EQ(asset->videoTracks().size(), 1U);
    EXPECT_EQ(asset->videoTracks()[0].naturalSize.width, 128);
    EXPECT_EQ(test::numberIn(*asset->makeImageGenerator(1, {})->copyImage(test::at(1.01))), 25);
}

TEST(AssetTracks, TheDefaultOneComesFirst) {
    clip("first.mkv", "-f lavfi -i color=red:s=64x48:r=25:d=2 -c:v libx264");
    clip("second.mkv", numberedFrames(50) + h264);
    const std::string both = "-i @first.mkv -i @second.mkv -map 0 -map 1 -c copy ";
    EXPECT_EQ(test::open(clip("marked.mkv", both + "-disposition:v:0 0 -disposition:v:1 default"))
                  ->videoTracks()
                  .at(0)
                  .naturalSize.width,
              128);
    EXPECT_EQ(test::open(clip("unmarked.mp4", both))->videoTracks().at(0).naturalSize.width, 64);
}

TEST(AssetTracks, SoundTracksAreDescribed) {
    const std::string path = clip("sounds.mkv",
                                  "-f lavfi -i sine=r=8000:d=1 -f lavfi -i anullsrc=cl=5.1:r=48000:d=1 "
                                  "-map 0 -map 1 -t 1 -c:a:0 pcm_s16le -c:a:1 ac3");
    const auto asset = test::open(path);
    EXPECT_TRUE(asset->videoTracks().empty());
    ASSERT_EQ(asset->soundTracks().size(), 2U);
    EXPECT_EQ(asset->soundTracks()[0].sampleRate, 8000);
    EXPECT_EQ(asset->soundTracks()[0].channelsPerFrame, 1);
    EXPECT_EQ(asset->soundTracks()[0].formatCode, 0x6C70636DU);  // lpcm
    EXPECT_EQ(asset->soundTracks()[1].sampleRate, 48000);
    EXPECT_EQ(asset->soundTracks()[1].channelsPerFrame, 6);
    EXPECT_EQ(asset->soundTracks()[1].formatCode, 0x61632D33U);  // ac-3
}

TEST(AssetTracks, RealClips) {
    struct Case {
        const char* name;
        double duration, rate;
        std::size_t videos, sounds;
    };
    for (const Case& c : {
             Case{"chaplin.mp4", 9.64, 25, 1, 1},
             Case{"big_buck_bunny_0_30.webm", 30.003, 24, 1, 1},
             Case{"bbb_2500ms.ts", 2.5, 24, 1, 1},
             Case{"tos.h264", 1000 / 24.0, 24, 1, 0},
             Case{"testVideoMp4.mp4", 13.696, 15, 1, 1},
             Case{"nasa_13013.mp4", 16.57, 25, 2, 2},
             Case{"100_0306.AVI", 2.733, 15, 1, 1},
             Case{"ftyp3gp5.mp4", 1.3, 30, 1, 1},
             Case{"h264-png.mp4", 2.02, 30, 1, 1},
             Case{"roadtrip-vp92-10bit.webm", 3.002, 23.976, 1, 0},
         }) {
        ZEB_REAL_CLIP(path, c.name);
        const auto asset = test::open(path);
        EXPECT_NEAR(asset->duration(), c.duration, 0.05) << c.name;
        ASSERT_EQ(asset->videoTracks().size(), c.videos) << c.name;
        EXPECT_EQ(asset->soundTracks().size(), c.sounds) << c.name;
        EXPECT_NEAR(asset->videoTracks()[0].nominalFrameRate, c.rate, 0.5) << c.name;
    }
}

}  // namespace
}  // namespace zeb
