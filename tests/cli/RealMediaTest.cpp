#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>

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
    const char* size;  ///< size of the movie fitted into 256 x 256
    int seconds;
};

void PrintTo(const RealClip& clip, std::ostream* stream) {
    *stream << clip.file;
}

class RealMedia : public ::testing::TestWithParam<RealClip> {};

// Few frames per second, so that reading takes most of the time. Both modes read the whole clip.
TEST_P(RealMedia, MakesSameValidMovieForAnyThreads) {
    const RealClip& clip = GetParam();
    const fs::path input = mediaFolder() / clip.file;
    if (!fs::exists(input))
        GTEST_SKIP() << "no " << input << "; set ZEB_TEST_MEDIA to the folder of real clips";
    const TemporaryFolder folder;
    for (const std::string mode : {"32", "4"}) {
        for (const std::string threads : {"1", "3"}) {
            const auto result = runZeb({"encode", input, "-o", folder.file(mode + threads), "--fps", "1",
                                        "--size", "256x256", "--mode", mode, "--threads", threads});
            ASSERT_EQ(result.exitCode, 0) << result.error;
        }
        const MovieCheck movie = rightMovie(folder.file(mode + "1"));
        EXPECT_EQ(std::to_string(movie.header.width) + "x" + std::to_string(movie.header.height), clip.size);
        EXPECT_EQ(movie.seconds, clip.seconds);
        EXPECT_TRUE(contents(folder.file(mode + "1")) == contents(folder.file(mode + "3")));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Clips, RealMedia,
    ::testing::Values(RealClip{"100_0306.AVI", "256x192", 3}, RealClip{"SAR-2by3.mp4", "256x208", 2},
                      RealClip{"bbb_2500ms.ts", "256x144", 3},
                      RealClip{"big_buck_bunny_0_30.webm", "256x144", 31},
                      RealClip{"chaplin.mp4", "256x144", 10}, RealClip{"corrupted.mp4", "256x144", 5},
                      RealClip{"ftyp3gp5.mp4", "144x256", 2}, RealClip{"h264-png.mp4", "256x144", 2},
                      RealClip{"nasa_13013.mp4", "256x144", 13}, RealClip{"png.mov", "256x192", 1},
                      RealClip{"roadtrip-vp92-10bit.webm", "256x144", 4},
                      RealClip{"sample_with_increasing_timestamps_320w_240h_5s.mp4", "256x192", 5},
                      RealClip{"testVideoMp4.mp4", "256x192", 14}, RealClip{"tos.h264", "256x104", 42},
                      RealClip{"xdcam-ex-1080i60.mov", "256x144", 1}));

}  // namespace
}  // namespace zeb::test
