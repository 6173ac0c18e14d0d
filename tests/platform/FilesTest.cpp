#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/files/FileHandle.h"
#include "platform/files/FileManager.h"
#include "platform/files/StagedOutput.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using enum OutputTerms::Existing;
using Bytes = std::vector<std::uint8_t>;

/// The path and number of the `FileError` that `action` throws. The number is 0 if it throws none.
template <typename Action>
std::pair<std::string, int> errorOf(Action action) {
    try {
        action();
    } catch (const FileError& error) {
        return {error.path(), error.code()};
    }
    return {};
}

TEST(FileHandleTest, WritesAtPositionAndReadsBack) {
    const test::TemporaryFolder folder;
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

TEST(FileHandleTest, WritesAnyNumberOfPiecesInOrder) {
    const test::TemporaryFolder folder;
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

TEST(FileHandleTest, ReadsBeyondFourGibibytesUpToEnd) {
    const test::TemporaryFolder folder;
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

TEST(FileHandleTest, RejectsNonRegularFilesWithoutBlocking) {
    const test::TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    fs::create_symlink(folder.file("pipe"), folder.file("link to pipe"));
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
        EXPECT_EQ(errorOf([&, &path = path] { openForReading(path); }).second, error) << path;
        EXPECT_EQ(errorOf([&, &path = path] { openForUpdating(path); }).second, error) << path;
    }
}

TEST(FileHandleTest, CreatesNewFilesOnly) {
    const test::TemporaryFolder folder;
    test::store(folder.file("f"), Bytes{1, 2});
    fs::create_symlink(folder.file("nowhere"), folder.file("dangling"));
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("f")); }).second, EEXIST);
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("dangling")); }).second, EEXIST);
    EXPECT_EQ(errorOf([&] { createForWriting(folder.file("no/folder")); }).second, ENOENT);
    EXPECT_EQ(test::contents<Bytes>(folder.file("f")), (Bytes{1, 2}));
    EXPECT_FALSE(fs::exists(folder.file("nowhere")));
}

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

TEST_F(FileManagerTest, RecognisesSameFileThroughLinksAndPaths) {
    for (const char* same : {"link", "second name", "folder/../film"})
        EXPECT_TRUE(files::isSameFile(at("film"), at(same))) << same;
    test::store(at("copy"), "bytes");
    for (const char* other : {"copy", "dangling", "nothing"})
        EXPECT_FALSE(files::isSameFile(at("film"), at(other))) << other;
    EXPECT_FALSE(files::isSameFile(at("nothing"), at("nothing")));
}

TEST_F(FileManagerTest, RemovesLinksButNotTheirTargets) {
    EXPECT_EQ(files::kindOf(at("link")), files::Kind::symbolicLink);
    EXPECT_EQ(files::kindOf(at("film") + std::string("\0x", 2)), std::nullopt);
    for (const char* name : {"link", "link to folder", "dangling", "second name"}) {
        files::removeFile(at(name));
        EXPECT_EQ(files::kindOf(at(name)), std::nullopt) << name;
    }
    EXPECT_EQ(files::kindOf(at("film")), files::Kind::regular);
    files::removeFile(at("film"));
    EXPECT_EQ(files::kindOf(at("film")), std::nullopt);
    EXPECT_THROW(files::removeFile(at("folder")), FileError);
    EXPECT_THROW(files::removeFile(at("pipe")), FileError);
    EXPECT_EQ(files::kindOf(at("folder")), files::Kind::folder);
    EXPECT_EQ(files::kindOf(at("pipe")), files::Kind::other);
}

void put(StagedOutput& stage, const std::string& name, const std::string& text) {
    const auto file = stage.create(name);
    file->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file->close();
}

TEST(StagedOutput, CommitsAllFilesOrNone) {
    const test::TemporaryFolder folder;
    const std::string place = folder.file("new/a");
    for (const auto& [text, existing] : {std::pair{"1", keep}, {"2", replace}}) {
        const OutputTerms terms{existing, OutputTerms::MissingFolder::make};
        {
            StagedOutput givenUp(folder.file("new/"), terms);
            put(givenUp, "a", "0");
            put(givenUp, "b", "0");
        }
        EXPECT_EQ(fs::exists(folder.file("new")), existing == replace);
        StagedOutput stage(folder.file("new"), terms);
        put(stage, "a", text);
        put(stage, "b", text);
        EXPECT_EQ(test::contents(place), existing == replace ? "1" : "");
        stage.commit();
        EXPECT_EQ(test::contents(place), text);
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>({"new", "new/a", "new/b"}));
    StagedOutput stage(folder.file("new"), {});
    EXPECT_THROW(stage.create("a"), OutputError);
    put(stage, "c", "3");
    test::store(folder.file("new/c"), "put there meanwhile");
    EXPECT_THROW(stage.commit(), OutputError);
    EXPECT_EQ(test::contents(folder.file("new/c")), "put there meanwhile");
}

TEST(StagedOutput, NamesFinalPathInErrors) {
    const test::TemporaryFolder folder;
    test::store(folder.file("file"), "");
    for (const std::string& place : {folder.file("missing"), folder.file("file")})
        EXPECT_EQ(errorOf([&] { StagedOutput stage(place, {}); }).first, place);
    EXPECT_FALSE(fs::exists(folder.file("missing")));
    StagedOutput stage(folder.path(), {});
    const std::string tooLong(300, 'x');
    EXPECT_EQ(errorOf([&] { stage.create(tooLong); }), std::pair(folder.file(tooLong), ENAMETOOLONG));
}

}  // namespace
}  // namespace zeb
