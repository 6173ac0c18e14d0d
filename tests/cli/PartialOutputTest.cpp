#include "cli/PartialOutput.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/format/GoldenMovie.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::cli {
namespace {

namespace golden = test::golden;

TEST(PartialOutput, LeavesAloneWhatIsNotItsOwn) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("a.zeb");
    PartialOutput output{path};
    // An old movie that the run never came to replace.
    test::store(path, golden::unfinishedMovie());
    output.noteCreated();
    EXPECT_EQ(output.settle().text, "");
    EXPECT_EQ(test::contents<golden::Bytes>(path), golden::unfinishedMovie());

    // A movie that someone else put there before the run created its own.
    output.noteReplaced();
    EXPECT_EQ(output.settle().text, "");
    EXPECT_TRUE(std::filesystem::exists(path));

    // One that someone else put there afterwards.
    output.noteCreated();
    std::filesystem::rename(path, folder.file("moved"));
    test::store(path, "");
    EXPECT_NE(output.settle().text, "");
    EXPECT_TRUE(std::filesystem::remove(path));

    // Nothing there any more.
    EXPECT_EQ(output.settle().text, "");
}

}  // namespace
}  // namespace zeb::cli
