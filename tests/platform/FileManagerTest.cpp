#include "platform/FileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/TemporaryFolder.h"

namespace zeb::files {
namespace {

namespace fs = std::filesystem;

class FileManagerTest : public testing::Test {
protected:
    FileManagerTest() {
        test::store(at("film"), "bytes");
        fs::create_directory(at("folder"));
        fs::create_symlink(at("film"), at("link"));
        fs::create_symlink(at("folder"), at("link to folder"));
        fs::create_symlink(at("nothing"), at("dangling"));
        fs::create_hard_link(at("film"), at("second name"));
        EXPECT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    }

    std::string at(const std::string& name) const { return m_folder.file(name); }

    test::TemporaryFolder m_folder;
};

TEST_F(FileManagerTest, SeesTheSameFileThroughLinksAndPaths) {
    for (const char* same : {"link", "second name", "folder/../film"})
        EXPECT_TRUE(isSameFile(at("film"), at(same))) << same;
    test::store(at("copy"), "bytes");
    for (const char* other : {"copy", "dangling", "nothing"})
        EXPECT_FALSE(isSameFile(at("film"), at(other))) << other;
    EXPECT_FALSE(isSameFile(at("nothing"), at("nothing")));
}

TEST_F(FileManagerTest, RemovesFilesAndLinksButNotTheirTargets) {
    EXPECT_EQ(kindOf(at("link")), Kind::symbolicLink);
    EXPECT_EQ(kindOf(at("film") + std::string("\0x", 2)), std::nullopt);
    for (const char* name : {"link", "link to folder", "dangling", "second name"}) {
        removeFile(at(name));
        EXPECT_EQ(kindOf(at(name)), std::nullopt) << name;
    }
    EXPECT_EQ(kindOf(at("film")), Kind::regular);
    removeFile(at("film"));
    EXPECT_EQ(kindOf(at("film")), std::nullopt);
    EXPECT_THROW(removeFile(at("folder")), FileError);
    EXPECT_THROW(removeFile(at("pipe")), FileError);
    EXPECT_EQ(kindOf(at("folder")), Kind::folder);
    EXPECT_EQ(kindOf(at("pipe")), Kind::other);
}

}  // namespace
}  // namespace zeb::files
