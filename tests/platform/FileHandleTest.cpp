#include "platform/FileHandle.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <vector>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::TemporaryFolder;

/// The error number of the `FileError` that `action` throws; 0 when it throws none.
int errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileError& error) {
        return error.code();
    }
    return 0;
}

TEST(FileHandleTest, WritesWhereItWasToldAndReadsBack) {
    const TemporaryFolder folder;
    const std::string path = folder.file("movie");
    const auto file = createForWriting(path);
    file->write(Bytes{1, 2, 3, 4, 5, 6});
    file->startWriteback();
    file->seek(2);
    file->write(Bytes{50, 51});
    EXPECT_EQ(file->seekToEnd(), 6u);
    file->write(Bytes{60});
    file->truncate(5);
    file->startWriteback();
    file->synchronise();
    file->close();
    EXPECT_EQ(test::contents<Bytes>(path), (Bytes{1, 2, 50, 51, 5}));

    const auto update = openForUpdating(path);
    update->write(Bytes{90});
    update->close();
    EXPECT_EQ(test::contents<Bytes>(path), (Bytes{90, 2, 50, 51, 5}));
}

TEST(FileHandleTest, WritesAnyNumberOfPiecesOneBehindTheOther) {
    const TemporaryFolder folder;
    Bytes whole(2'000'000);
    for (std::size_t i = 0; i < whole.size(); ++i)
        whole[i] = static_cast<std::uint8_t>(i * i / 1000);
    std::vector<std::span<const std::uint8_t>> pieces;
    std::size_t begin = 0;
    for (std::size_t size = 0; begin < whole.size(); ++size, begin += pieces.back().size())
        pieces.push_back(std::span(whole).subspan(begin, std::min(size % 1500, whole.size() - begin)));
    ASSERT_GT(pieces.size(), 2048u);
    const auto file = createForWriting(folder.file("movie"));
    file->write(pieces);
    EXPECT_EQ(file->seekToEnd(), whole.size());
    EXPECT_TRUE(test::contents<Bytes>(folder.file("movie")) == whole);
}

TEST(FileHandleTest, ReachesBeyondFourGibibytesAndNoFurtherThanTheEnd) {
    const TemporaryFolder folder;
    const std::string path = folder.file("sparse");
    constexpr std::uint64_t far = std::uint64_t{5} << 30;
    const auto file = createForWriting(path);
    file->seek(far);
    file->write(Bytes{7, 8});
    file->close();
    const auto reading = openForReading(path);
    Bytes buffer(4);
    EXPECT_EQ(reading->size(), far + 2);
    EXPECT_EQ(reading->readAt(far, buffer), 2u);
    EXPECT_EQ(buffer, (Bytes{7, 8, 0, 0}));
    EXPECT_EQ(reading->readAt(~std::uint64_t{0}, buffer), 0u);
}

TEST(FileHandleTest, RefusesWhatIsNoRegularFileWithoutWaiting) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(folder.file("pipe"), folder.file("link to pipe"));
    test::store(folder.file("f"), Bytes{1});

    const struct {
        std::string path;
        int error;
    } cases[] = {
        {folder.file("missing"), ENOENT},
        {folder.path(), EISDIR},
        {folder.file("pipe"), EINVAL},
        {folder.file("link to pipe"), EINVAL},
        {"/dev/null", EINVAL},
        {folder.file("f") + std::string("\0.zeb", 5), EINVAL},
        {folder.file("f") + "/below", ENOTDIR},
    };
    for (const auto& refused : cases) {
        EXPECT_EQ(errorOf([&] { openForReading(refused.path); }), refused.error) << refused.path;
        EXPECT_EQ(errorOf([&] { openForUpdating(refused.path); }), refused.error) << refused.path;
    }
}

TEST(FileHandleTest, CreatesOnlyWhatDoesNotExist) {
    const TemporaryFolder folder;
    test::store(folder.file("f"), Bytes{1, 2});
    std::filesystem::create_symlink(folder.file("nowhere"), folder.file("dangling"));
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("f")); }), EEXIST);
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("dangling")); }), EEXIST);
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("no/folder")); }), ENOENT);
    EXPECT_EQ(test::contents<Bytes>(folder.file("f")), (Bytes{1, 2}));
    EXPECT_FALSE(std::filesystem::exists(folder.file("nowhere")));
}

}  // namespace
}  // namespace zeb
