#include <gtest/gtest.h>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;
using test::numberedFrames;

/// Replaces 32-bit fields of an ISO media file at `offset` bytes after the name of each matching box.
std::string patched(std::string file, const std::string& box, std::size_t offset, std::uint32_t value) {
    for (std::size_t at = file.find(box); at != std::string::npos; at = file.find(box, at + 4)) {
        for (std::size_t i = 0; i < 4; ++i)
            file[at + offset + i] = static_cast<char>(value >> (24 - 8 * i));
    }
    return file;
}

TEST(AssetDuration, IsMeasuredWhereContainersOmitIt) {
    for (const std::string name :
         {"h264.h264", "mpeg2.m2v", "mjpeg.mjpeg", "h264.ts", "mpeg2.mpg", "mpeg4.avi"})
        EXPECT_NEAR(test::open(test::numberedFilm(name))->duration(), 4, 0.045) << name;
    for (const auto& [name, arguments] : {
             std::pair{"live.mkv", "-live 1 -f matroska"},
             {"live.flv", "-flvflags no_duration_filesize"},
             {"shifted.ts", "-output_ts_offset 10"},
             {"shifted.mkv", "-output_ts_offset 1.5"},
             {"shifted-live.mkv", "-output_ts_offset 3000 -live 1 -f matroska"},
         }) {
        const std::string path = clip(name, numberedFrames(100) + test::h264 + arguments);
        EXPECT_NEAR(test::open(path)->duration(), 4, 0.045) << name;
    }
}

TEST(AssetDuration, IgnoresAbsurdLengthsInHeaders) {
    const std::string honest = test::contents(test::numberedFilm("fragments.mp4"));
    for (const std::uint32_t claimed : {144'000'000U, 3'600'000U}) {  // milliseconds
        const std::string lie = patched(patched(honest, "mvhd", 20, claimed), "tkhd", 24, claimed);
        EXPECT_NEAR(test::open(test::stored("lying.mp4", lie))->duration(), 4, 0.045) << claimed;
    }
}

TEST(AssetDuration, IncludesSoundLongerThanPictures) {
    for (const char* name : {"long-sound.mp4", "long-sound.mkv", "long-sound.ts"}) {
        const std::string path = clip(
            name, numberedFrames(50) + "-f lavfi -i sine=d=3.5 -map 0 -map 1 " + test::h264 + "-c:a aac");
        EXPECT_NEAR(test::open(path)->duration(), 3.5, 0.08) << name;
    }
}

TEST(AssetFrameRate, IsAverageOfUnevenFrames) {
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
             // Uneven times: 0, 1, 4, 5, 8, 9 ... fiftieths of a second
             Case{"uneven.mp4", "50", "-vf setpts=2*N-mod(N\\,2) -fps_mode passthrough", 25},
             Case{"nominal-1000.mkv", "1000", "-vf setpts=40*N -fps_mode passthrough", 25},
             Case{"nominal-1000.avi", "1000", "-vf setpts=40*N -fps_mode passthrough", 25},
             Case{"fast.mp4", "120", "", 120},
             Case{"high-speed.mp4", "600", "", 600},
             Case{"high-speed.avi", "1000", "", 1000},
         }) {
        const auto asset = test::open(clip(c.name, numberedFrames(100, c.rate) + test::h264 + c.arguments));
        EXPECT_NEAR(asset->videoTracks().at(0).nominalFrameRate, c.expected, c.expected * 0.02) << c.name;
        EXPECT_NEAR(asset->duration(), 100 / c.expected, 0.06) << c.name;
    }
}

TEST(AssetTracks, OmitCoversAndListDefaultVideoFirst) {
    clip("cover.png", "-f lavfi -i color=red:s=48x48 -frames:v 1");
    clip("red.mkv", "-f lavfi -i color=red:s=64x48:r=25:d=2 -c:v libx264");
    clip("numbers.mkv", numberedFrames(50) + test::h264);
    const auto tracks = [](const std::string& name, const std::string& first, const std::string& options) {
        const auto asset =
            test::open(clip(name, "-i @" + first + " -i @numbers.mkv -map 0 -map 1 -c copy " + options));
        std::vector<double> widths;
        for (const VideoTrack& track : asset->videoTracks())
            widths.push_back(track.naturalSize.width);
        if (widths[0] == 128) {
            EXPECT_EQ(test::numberAt(*asset->makeImageGenerator(1, {}), 1.01), 25) << name;
        }
        return widths;
    };
    using Widths = std::vector<double>;
    EXPECT_EQ(tracks("covered.mp4", "cover.png", "-disposition:v:0 attached_pic"), Widths({128}));
    EXPECT_EQ(tracks("unmarked.mp4", "red.mkv", ""), Widths({64, 128}));
    EXPECT_EQ(tracks("marked.mkv", "red.mkv", "-disposition:v:0 0 -disposition:v:1 default"),
              Widths({128, 64}));
}

TEST(AssetTracks, ListRateChannelsAndFormatOfSound) {
    const auto asset = test::open(clip("sounds.mkv",
                                       "-f lavfi -i sine=r=8000:d=1 -f lavfi -i anullsrc=cl=5.1:r=48000:d=1 "
                                       "-map 0 -map 1 -t 1 -c:a:0 pcm_s16le -c:a:1 ac3"));
    EXPECT_TRUE(asset->videoTracks().empty());
    std::vector<std::tuple<double, int, std::uint32_t>> sounds;
    for (const SoundTrack& track : asset->soundTracks())
        sounds.emplace_back(*track.sampleRate, *track.channelsPerFrame, *track.formatCode);
    EXPECT_EQ(sounds, (decltype(sounds){{8000, 1, 0x6C70636D}, {48000, 6, 0x61632D33}}));  // lpcm, ac-3
}

}  // namespace
}  // namespace zeb
