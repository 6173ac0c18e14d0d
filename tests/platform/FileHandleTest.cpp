#include "platform/FileHandle.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::TemporaryFolder;

/// The error number of the `FileError` that `action` throws; 0 when it throws none.
template <typename Action>
int errorOf(Action action) {
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

    const std::pair<std::string, int> cases[] = {
        {folder.file("missing"), ENOENT},
        {folder.path(), EISDIR},
        {folder.file("pipe"), EINVAL},
        {folder.file("link to pipe"), EINVAL},
        {folder.file("f") + std::string("\0.zeb", 5), EINVAL},
        {folder.file("f") + "/below", ENOTDIR},
    };
    for (const auto& [path, error] : cases) {
        EXPECT_EQ(errorOf([&, &path = path] { openForReading(path); }), error) << path;
        EXPECT_EQ(errorOf([&, &path = path] { openForUpdating(path); }), error) << path;
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
