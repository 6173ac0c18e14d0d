#include <gmock/gmock.h>

#include "codec/SpriteEncoder.h"
#include "conversion/ReducedImage.h"
#include "format/ZEBWriter.h"
#include "platform/fake/FakeMedia.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

using testing::ElementsAre;

FrameImage picture(int width, int height, const std::vector<std::uint8_t>& pixels) {
    FrameImage image;
    image.width = width;
    image.height = height;
    image.pixels.assign(pixels.begin(), pixels.end());
    return image;
}

TEST(ReducedImage, IsTheMeanOfWhatItCovers) {
    // Three pixels to two: each covers one and a half.
    const FrameImage row = reducedImage(picture(3, 1, {0, 10, 20, 255, 90, 10, 50, 255, 30, 40, 80, 255}), 2);
    EXPECT_EQ(row.width, 2);
    EXPECT_EQ(row.height, 1);
    EXPECT_THAT(row.pixels, ElementsAre(30, 10, 30, 255, 50, 30, 70, 255));
    const FrameImage column = reducedImage(picture(1, 2, {1, 2, 3, 4, 4, 4, 4, 4}), 1);
    EXPECT_THAT(column.pixels, ElementsAre(3, 3, 4, 4));
    EXPECT_EQ(reducedImage(picture(1, 2, {1, 2, 3, 4, 4, 4, 4, 4}), 2).pixels.size(), 8U);
}

TEST(ThumbnailProgram, WritesTheFirstPictureWholeOrNothing) {
    const TemporaryFolder folder;
    const std::string movie = folder.file("movie.zeb");
    MovieParameters parameters;
    parameters.width = 96;
    parameters.height = 64;
    parameters.fps = 1;
    parameters.qlMode = 32;
    parameters.totalFrames = 1;
    parameters.frameIndexCount = 1;
    const auto record = SpriteEncoder().encodeMode32Sprite(fake::FakePicture(1), 96, 64);
    const std::vector<std::span<const std::uint8_t>> frames = {record};
    ZEBWriter writer(movie, parameters);
    writer.writeSecond({}, frames);
    writer.finish();
    writer.close();
    store(folder.file("cut.zeb"), contents(movie).substr(0, 60));
    store(folder.file("text.zeb"), "no movie");

    const std::string picture = folder.file("picture.png");
    store(picture, "old");
    for (const char* wrong : {"cut.zeb", "text.zeb", "missing.zeb", "."}) {
        const auto result = runZeb({"thumbnail", folder.file(wrong), picture});
        EXPECT_EQ(result.exitCode, 3) << wrong;
        EXPECT_THAT(result.error, testing::AllOf(testing::StartsWith("zeb: "), testing::HasSubstr(wrong)));
    }
    EXPECT_EQ(contents(picture), "old");
    EXPECT_EQ(runZeb({"thumbnail", movie, folder.file("nowhere/picture/a.png")}).exitCode, 4);
    EXPECT_EQ(runZeb({"thumbnail", movie, picture, "--size", "0"}).exitCode, 2);

    EXPECT_EQ(runZeb({"thumbnail", movie, picture, "--size", "48"}).exitCode, 0);
    // The header of a PNG: 48 x 32.
    EXPECT_EQ(contents(picture).substr(12, 12), std::string("IHDR\0\0\0\x30\0\0\0\x20", 12));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"cut.zeb", "movie.zeb", "picture.png", "text.zeb"}));
}

}  // namespace
}  // namespace zeb::test
