#include "app/Requests.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/files/StandardFolders.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using testing::UnorderedElementsAre;

constexpr std::int64_t now = 1'700'000'000;
constexpr std::int64_t day = 86'400;

class SharedInboxTest : public testing::Test {
protected:
    SharedInboxTest() { fs::create_directory(place("SharedInbox")); }

    fs::path place(const std::string& name) const { return m_container.file(name); }

    /// Sets the date of an entry to now plus the given seconds and nanoseconds. Does not follow links.
    void date(const std::string& name, std::int64_t seconds, long nanoseconds = 0) const {
        const timespec time{static_cast<time_t>(now + seconds), nanoseconds};
        const timespec times[] = {time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, place(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << name;
    }
    void file(const std::string& name, std::int64_t seconds, long nanoseconds = 0) const {
        std::ofstream(place(name)) << "bytes";
        date(name, seconds, nanoseconds);
    }
    void clean() const {
        cleanSharedInbox(m_container.path(),
                         std::chrono::system_clock::time_point(std::chrono::seconds(now)));
    }
    std::vector<std::string> names(const std::string& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(place(folder)))
            names.push_back(entry.path().filename().string());
        return names;
    }

    test::TemporaryFolder m_container;
};

TEST_F(SharedInboxTest, RemovesEntriesOlderThanSevenDays) {
    file("SharedInbox/eight days", -8 * day);
    file("SharedInbox/to the second", -7 * day);
    file("SharedInbox/a moment older", -7 * day - 1, 999'999'999);
    file("SharedInbox/far future", 300 * 365 * day);
    file("SharedInbox/far past", -100 * 365 * day);
    file("SharedInbox/.hidden", -8 * day);
    clean();
    EXPECT_THAT(names("SharedInbox"), UnorderedElementsAre("to the second", "far future", ".hidden"));
}

TEST_F(SharedInboxTest, JudgesFoldersAndLinksByOwnDate) {
    fs::create_directory(place("outside"));
    file("outside/precious", -8 * day);
    fs::create_directories(place("SharedInbox/old/a/b/.c"));
    fs::create_directories(place("SharedInbox/new/a"));
    file("SharedInbox/old/a/b/new", 0);
    file("SharedInbox/new/a/old", -8 * day);
    ASSERT_EQ(::mkfifo(place("SharedInbox/old/a/pipe").c_str(), 0600), 0);
    for (const char* link : {"old link", "new link", "old/link"})
        fs::create_directory_symlink(place("outside"), place("SharedInbox") / link);
    fs::create_symlink(place("outside/precious"), place("SharedInbox/file link"));
    fs::create_symlink(place("nothing"), place("SharedInbox/dangling"));
    for (const char* name : {"old", "old link", "file link", "dangling"})
        date(std::string("SharedInbox/") + name, -8 * day);
    for (const char* name : {"new", "new link"})
        date(std::string("SharedInbox/") + name, -6 * day);
    clean();
    EXPECT_THAT(names("SharedInbox"), UnorderedElementsAre("new", "new link"));
    EXPECT_THAT(names("SharedInbox/new/a"), UnorderedElementsAre("old"));
    EXPECT_THAT(names("outside"), UnorderedElementsAre("precious"));
}

TEST_F(SharedInboxTest, IgnoresMissingOrLinkedInbox) {
    fs::rename(place("SharedInbox"), place("elsewhere"));
    file("elsewhere/precious", -8 * day);
    clean();
    EXPECT_FALSE(fs::exists(place("SharedInbox")));
    fs::create_directory_symlink(place("elsewhere"), place("SharedInbox"));
    clean();
    cleanSharedInbox(std::nullopt, {});
    EXPECT_THAT(names("elsewhere"), UnorderedElementsAre("precious"));
}

}  // namespace
}  // namespace zeb
