#include "platform/StagedOutput.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using enum StagedOutput::Existing;
using test::contents;

void put(StagedOutput& stage, const std::string& name, const std::string& text) {
    const auto file = stage.create(name);
    file->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file->close();
}

TEST(StagedOutput, ShowsFilesOnlyWhenAllAreComplete) {
    const test::TemporaryFolder folder;
    const std::string target = folder.file("new");
    {
        StagedOutput stage(target + "/");
        put(stage, "a", "1");
        put(stage, "b", "2");
        EXPECT_FALSE(fs::exists(target + "/a"));
    }
    EXPECT_FALSE(fs::exists(target));  // given up
    {
        StagedOutput stage(target);
        put(stage, "a", "1");
        put(stage, "b", "2");
        stage.commit(keep);
    }
    EXPECT_EQ(contents(target + "/a") + contents(target + "/b"), "12");
    EXPECT_EQ(std::distance(fs::directory_iterator(target), {}), 2);
}

TEST(StagedOutput, ReplacesOnlyWhenTold) {
    const test::TemporaryFolder folder;
    const std::string place = folder.file("a");
    std::ofstream(place) << "old";
    {
        StagedOutput stage(folder.path());
        put(stage, "a", "new");
        try {
            stage.commit(keep);
            FAIL();
        } catch (const FileError& error) {
            EXPECT_EQ(error.code(), EEXIST);
            EXPECT_EQ(error.path(), place);
        }
    }
    EXPECT_EQ(contents(place), "old");
    StagedOutput stage(folder.path());
    put(stage, "a", "new");
    stage.commit(replace);
    EXPECT_EQ(contents(place), "new");
}

TEST(StagedOutput, NamesTheLaterPlaceInErrors) {
    const test::TemporaryFolder folder;
    std::ofstream(folder.file("file")) << "";
    for (const char* place : {"missing/deeper", "file"}) {
        try {
            StagedOutput stage(folder.file(place));
            FAIL() << place;
        } catch (const FileError& error) {
            EXPECT_EQ(error.path(), folder.file(place));
        }
    }
    StagedOutput stage(folder.path());
    const std::string tooLong(300, 'x');
    EXPECT_THROW(
        {
            try {
                stage.create(tooLong);
            } catch (const FileError& error) {
                EXPECT_EQ(error.path(), folder.path() + "/" + tooLong);
                throw;
            }
        },
        FileError);
}

}  // namespace
}  // namespace zeb
