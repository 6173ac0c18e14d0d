#include "platform/files/OpenFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;

class OpenFolderTest : public testing::Test {
protected:
    OpenFolderTest() {
        fs::create_directories(m_temporary.file("folder/tree"));
        fs::create_directory(m_temporary.file("outside"));
        test::store(m_temporary.file("outside/precious"), "bytes");
    }

    OpenFolder folder() const { return OpenFolder::open(m_temporary.file("folder")).value(); }

    test::TemporaryFolder m_temporary;
};

TEST_F(OpenFolderTest, RemovesTreesDeeperThanDescriptorLimit) {
    // Created through descriptors, because the path would be too long.
    int inside = ::open(m_temporary.file("folder/tree").c_str(), O_RDONLY);
    for (int level = 0; level < 3000; ++level) {
        ASSERT_EQ(::mkdirat(inside, "sub", 0700), 0);
        ASSERT_EQ(::symlinkat("../..", inside, "up"), 0);
        ::close(::openat(inside, "file", O_CREAT | O_WRONLY, 0600));
        const int deeper = ::openat(inside, "sub", O_RDONLY);
        ::close(inside);
        inside = deeper;
    }
    ::close(inside);
    EXPECT_TRUE(folder().remove("tree"));
    EXPECT_EQ(m_temporary.names(), std::vector<std::string>({"folder", "outside", "outside/precious"}));
}

TEST_F(OpenFolderTest, RemovesReadablePartOfTree) {
    fs::create_directories(m_temporary.file("folder/tree/empty"));
    fs::create_directories(m_temporary.file("folder/tree/full/file"));
    test::store(m_temporary.file("folder/tree/z"), "bytes");
    for (const char* name : {"folder/tree/empty", "folder/tree/full"})
        fs::permissions(m_temporary.file(name), fs::perms::none);
    // Root may read everything. When running as root, give the folders to another user and act as that user.
    constexpr uid_t nobody = 65534;
    const bool isSuperuser = ::geteuid() == 0;
    if (isSuperuser) {
        for (const std::string& name : m_temporary.names())
            ASSERT_EQ(::chown(m_temporary.file(name).c_str(), nobody, nobody), 0) << name;
        ASSERT_EQ(::chown(m_temporary.path().c_str(), nobody, nobody), 0);
        ASSERT_EQ(::seteuid(nobody), 0);
    }
    const bool isGone = folder().remove("tree");
    ASSERT_TRUE(!isSuperuser || ::seteuid(0) == 0);
    EXPECT_FALSE(isGone);
    fs::permissions(m_temporary.file("folder/tree/full"), fs::perms::owner_all);
    EXPECT_EQ(m_temporary.names(),
              std::vector<std::string>({"folder", "folder/tree", "folder/tree/full", "folder/tree/full/file",
                                        "outside", "outside/precious"}));
}

#ifdef RENAME_EXCHANGE
TEST_F(OpenFolderTest, NeverFollowsLinksSwappedForFolders) {
    const std::string part = m_temporary.file("folder/tree/part");
    const std::string swap = m_temporary.file("swap");
    for (int round = 0; round < 300; ++round) {
        fs::create_directories(part + "/a/b");
        for (int file = 0; file < 4; ++file)
            test::store(part + "/" + std::to_string(file), "bytes");
        fs::create_directory_symlink(m_temporary.file("outside"), swap);
        std::jthread swapper([&](const std::stop_token& token) {
            while (!token.stop_requested())
                ::renameat2(AT_FDCWD, part.c_str(), AT_FDCWD, swap.c_str(), RENAME_EXCHANGE);
        });
        for (int attempt = 0; attempt < 20 && !folder().remove("tree"); ++attempt) {
        }
        ASSERT_TRUE(fs::exists(m_temporary.file("outside/precious"))) << "round " << round;
        swapper.request_stop();
        swapper.join();
        fs::remove_all(swap);
        fs::remove_all(m_temporary.file("folder/tree"));
    }
}
#endif

}  // namespace
}  // namespace zeb
