#include <gmock/gmock.h>

#include "conversion/ReducedImage.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using testing::ElementsAre;
using ThumbnailProgram = ClipTest;

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

TEST_F(ThumbnailProgram, WritesTheFirstPictureWholeOrNothing) {
    ASSERT_EQ(zeb({"encode", "a.mov"}).exitCode, 0);
    store(m_folder.file("cut.zeb"), contents(m_folder.file("a.zeb")).substr(0, 60));
    store(m_folder.file("text.zeb"), "no movie");
    store(m_folder.file("a.png"), "old");
    for (const std::string wrong : {"cut.zeb", "text.zeb", "missing.zeb", "."})
        expectFailure({"thumbnail", wrong, "a.png"}, 3, wrong);
    expectFailure({"thumbnail", "a.zeb", "nowhere/picture/a.png"}, 4, "");
    expectFailure({"thumbnail", "a.zeb", "a.png", "--size", "0"}, 2, "");
    EXPECT_EQ(contents(m_folder.file("a.png")), "old");

    EXPECT_EQ(zeb({"thumbnail", "a.zeb", "a.png", "--size", "48"}).exitCode, 0);
    // The header of a PNG: 48 x 36.
    EXPECT_EQ(contents(m_folder.file("a.png")).substr(12, 12), std::string("IHDR\0\0\0\x30\0\0\0\x24", 12));
}

}  // namespace
}  // namespace zeb::test
