#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "codec/SpriteEncoder.h"
#include "conversion/ConversionPlan.h"
#include "format/ZEBReader.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "tests/cli/StrictMovie.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

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

/// The colours that the screen shows of a picture: blue, green, red, alpha.
std::vector<std::uint8_t> shown(const Picture& picture, int width, int height, int mode) {
    SpriteEncoder encoder;
    std::vector<std::uint8_t> colours;
    if (mode == 4) {
        for (const std::uint8_t index : encoder.quantizeLuma(picture, width, height, 4, true)) {
            const bool isGreen = index >= 2, isRed = index % 2 == 1;
            for (const bool isLit : {isGreen && isRed, isGreen, isRed, true})
                colours.push_back(isLit ? 255 : 0);
        }
        return colours;
    }
    const auto words = encoder.packRGB565(encoder.renderRGBA(picture, width, height), width, height);
    for (std::size_t i = 0; i < words.size(); i += 2) {
        const int word = words[i] | words[i + 1] << 8;
        for (const int component :
             {(word & 31) * 255 / 31, (word >> 5 & 63) * 255 / 63, (word >> 11) * 255 / 31, 255})
            colours.push_back(static_cast<std::uint8_t>(component));
    }
    return colours;
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
    std::vector<std::uint8_t> expected;
    for (std::int64_t index = 0; index < schedule.count; ++index) {
        try {
            expected =
                shown(*generator->copyImage(schedule.at(index)), plan.size.width, plan.size.height, mode);
        } catch (const MediaError&) {
            // A damaged picture: the one before it stays.
        }
        const auto frame = reader.nextFrame(false);
        ASSERT_TRUE(frame);
        EXPECT_TRUE(std::ranges::equal(frame->pixels, expected)) << "frame " << index;
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
        const StrictMovie movie = readStrictly(output);
        EXPECT_EQ(std::to_string(movie.width) + "x" + std::to_string(movie.height), clip.size);
        EXPECT_EQ(movie.seconds, clip.seconds);
        EXPECT_EQ(runZeb({"verify", output}).exitCode, 0);
        expectSamePictures(input, output, movie.mode);
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
