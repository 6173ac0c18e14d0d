#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "codec/SpriteEncoder.h"
#include "conversion/ConversionPlan.h"
#include "format/ZEBReader.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;

fs::path mediaFolder() {
    const char* chosen = std::getenv("ZEB_TEST_MEDIA");
    return chosen != nullptr ? chosen : ZEB_MEDIA_FOLDER;
}

struct RealClip {
    const char* file;
    const char* size;  ///< of the movie fitted into 256 x 256
    int seconds;
};

void PrintTo(const RealClip& clip, std::ostream* stream) {
    *stream << clip.file;
}

/// Every frame of the movie shows what the source shows at its moment.
void expectSamePictures(const std::string& input, const std::string& output, int mode) {
    const auto library = makeFFmpegMediaLibrary(MediaLogging::silent);
    const auto asset = library->open(input, {});
    Settings settings;
    settings.width = settings.height = 256;
    settings.fps = 1;
    settings.fpsFromSource = false;
    const ConversionPlan plan = planConversion(asset->videoTracks().front(), asset->duration(), settings);
    const GrabSchedule schedule = grabSchedule(plan);
    const auto generator = asset->makeImageGenerator(1, {});
    generator->expect(schedule);  // or damaged pictures that nobody needs would be decoded
    ZEBReader reader(output);
    ASSERT_EQ(reader.readHeader().frameCount, schedule.count);
    SpriteEncoder encoder;
    FrameDecoder decoder;
    std::optional<FrameImage> expected;
    for (std::int64_t index = 0; index < schedule.count; ++index) {
        try {
            const auto picture = generator->copyImage(schedule.at(index));
            const auto [width, height] = plan.size;
            expected =
                decoder.decodeFrame(mode == 4 ? encoder.encodeMode4Sprite(*picture, width, height, true)
                                              : encoder.encodeMode32Sprite(*picture, width, height),
                                    width, height);
        } catch (const MediaError&) {
            // A damaged picture: the one before it stays.
        }
        const auto frame = reader.nextFrame(false);
        ASSERT_TRUE(frame && expected);
        EXPECT_TRUE(frame->pixels == expected->pixels) << "frame " << index;
    }
}

class RealMedia : public ::testing::TestWithParam<RealClip> {};

// Few frames, so that the time goes into reading; both modes see all of it.
TEST_P(RealMedia, BecomesAValidMovie) {
    const RealClip& clip = GetParam();
    const fs::path input = mediaFolder() / clip.file;
    if (!fs::exists(input))
        GTEST_SKIP() << "no " << input << "; set ZEB_TEST_MEDIA to the folder of real clips";
    const TemporaryFolder folder;
    const std::string output = folder.file("a.zeb");
    for (const std::vector<std::string>& mode : {std::vector<std::string>{"32"}, {"4", "--dither"}}) {
        std::vector<std::string> words = {"encode", input,    "-o",      output,       "--force", "--fps",
                                          "1",      "--size", "256x256", "--progress", "none",    "--mode"};
        words.insert(words.end(), mode.begin(), mode.end());
        const auto result = runZeb(words);
        ASSERT_EQ(result.exitCode, 0) << result.error;
        const MovieCheck movie = rightMovie(output);
        EXPECT_EQ(std::to_string(movie.header.width) + "x" + std::to_string(movie.header.height), clip.size);
        EXPECT_EQ(movie.seconds, clip.seconds);
        expectSamePictures(input, output, movie.header.mode);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Clips, RealMedia,
    ::testing::Values(RealClip{"100_0306.AVI", "256x192", 3}, RealClip{"SAR-2by3.mp4", "256x208", 3},
                      RealClip{"bbb_2500ms.ts", "256x144", 3},
                      RealClip{"big_buck_bunny_0_30.webm", "256x144", 31},
                      RealClip{"chaplin.mp4", "256x144", 10}, RealClip{"corrupted.mp4", "256x144", 5},
                      RealClip{"ftyp3gp5.mp4", "144x256", 2}, RealClip{"h264-png.mp4", "256x144", 3},
                      RealClip{"nasa_13013.mp4", "256x144", 17}, RealClip{"png.mov", "256x192", 1},
                      RealClip{"roadtrip-vp92-10bit.webm", "256x144", 4},
                      RealClip{"sample_with_increasing_timestamps_320w_240h_5s.mp4", "256x192", 6},
                      RealClip{"testVideoMp4.mp4", "256x192", 14}, RealClip{"tos.h264", "256x104", 42},
                      RealClip{"xdcam-ex-1080i60.mov", "256x144", 1}));

}  // namespace
}  // namespace zeb::test
