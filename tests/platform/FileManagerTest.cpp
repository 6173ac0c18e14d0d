#include "platform/FileManager.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/platform/TemporaryFolder.h"

namespace zeb::files {
namespace {

namespace fs = std::filesystem;

class FileManagerTest : public testing::Test {
protected:
    FileManagerTest() {
        std::ofstream(m_folder.file("film")) << "bytes";
        fs::create_directory(m_folder.file("folder"));
        fs::create_symlink(m_folder.file("film"), m_folder.file("link"));
        fs::create_symlink(m_folder.file("folder"), m_folder.file("link to folder"));
        fs::create_symlink(m_folder.file("nothing"), m_folder.file("dangling"));
        fs::create_hard_link(m_folder.file("film"), m_folder.file("second name"));
        EXPECT_EQ(::mkfifo(m_folder.file("pipe").c_str(), 0600), 0);
    }

    test::TemporaryFolder m_folder;
};

TEST_F(FileManagerTest, TellsKindsWithoutFollowingLinks) {
    EXPECT_EQ(kindOf(m_folder.file("film")), Kind::regular);
    EXPECT_EQ(kindOf(m_folder.file("folder")), Kind::folder);
    EXPECT_EQ(kindOf(m_folder.file("link")), Kind::symbolicLink);
    EXPECT_EQ(kindOf(m_folder.file("dangling")), Kind::symbolicLink);
    EXPECT_EQ(kindOf(m_folder.file("pipe")), Kind::other);
    EXPECT_EQ(kindOf(m_folder.file("nothing")), std::nullopt);
    EXPECT_EQ(kindOf(m_folder.file("film") + std::string("\0x", 2)), std::nullopt);
}

TEST_F(FileManagerTest, SeesTheSameFileThroughLinksAndPaths) {
    const std::string film = m_folder.file("film");
    EXPECT_TRUE(isSameFile(film, m_folder.file("link")));
    EXPECT_TRUE(isSameFile(film, m_folder.file("second name")));
    EXPECT_TRUE(isSameFile(film, m_folder.file("folder/../film")));
    std::ofstream(m_folder.file("copy")) << "bytes";
    EXPECT_FALSE(isSameFile(film, m_folder.file("copy")));
    EXPECT_FALSE(isSameFile(m_folder.file("nothing"), m_folder.file("nothing")));
    EXPECT_FALSE(isSameFile(film, m_folder.file("dangling")));
}

TEST_F(FileManagerTest, RemovesFilesAndLinksButNotTheirTargets) {
    for (const char* name : {"link", "link to folder", "dangling", "second name"}) {
        removeFile(m_folder.file(name));
        EXPECT_EQ(kindOf(m_folder.file(name)), std::nullopt) << name;
    }
    EXPECT_EQ(kindOf(m_folder.file("folder")), Kind::folder);
    removeFile(m_folder.file("film"));
    EXPECT_EQ(kindOf(m_folder.file("film")), std::nullopt);
    for (const char* name : {"folder", "pipe"}) {
        EXPECT_THROW(removeFile(m_folder.file(name)), FileError);
        EXPECT_TRUE(kindOf(m_folder.file(name))) << name;
    }
}

}  // namespace
}  // namespace zeb::files
