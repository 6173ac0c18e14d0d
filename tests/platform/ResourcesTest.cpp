#include "platform/Resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

TEST(ResourcesTest, TheFirstFolderThatHasTheFileWins) {
    const test::TemporaryFolder first;
    const test::TemporaryFolder second;
    std::filesystem::create_directories(first.file("sounds/Folder.aiff"));
    std::filesystem::create_directories(second.file("sounds"));
    for (const char* name : {"sounds/Folder.aiff", "sounds/Ping.aiff"})
        std::ofstream(second.file(name)) << "x";
    const ResourceFolders folders{first.path(), first.file("missing"), second.path()};
    EXPECT_EQ(resourcePath("sounds/Ping", "aiff", folders), second.file("sounds/Ping.aiff"));
    EXPECT_EQ(resourcePath("sounds/Folder", "aiff", folders), second.file("sounds/Folder.aiff"));
    EXPECT_EQ(resourcePath("sounds/Ping", "wav", folders), std::nullopt);
    std::ofstream(first.file("sounds/Ping.aiff")) << "x";
    EXPECT_EQ(resourcePath("sounds/Ping", "aiff", folders), first.file("sounds/Ping.aiff"));
}

TEST(ResourcesTest, LooksBesideTheProgramAndInTheDataFolders) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string beside = program.parent_path().parent_path() / "share/zebmaker";
    EXPECT_THAT(standardResourceFolders(), testing::Contains(beside));
    EXPECT_TRUE(std::filesystem::path(standardResourceFolders().back()).is_absolute());
}

}  // namespace
}  // namespace zeb
