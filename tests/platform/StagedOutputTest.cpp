#include "platform/StagedOutput.h"

#include <gtest/gtest.h>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using enum StagedOutput::Existing;
using Names = std::vector<std::string>;

void put(StagedOutput& stage, const std::string& name, const std::string& text) {
    const auto file = stage.create(name);
    file->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file->close();
}

/// What the error is about that `action` throws, and its number.
template <typename Action>
std::pair<std::string, int> errorOf(Action action) {
    try {
        action();
    } catch (const FileError& error) {
        return {error.path(), error.code()};
    }
    return {};
}

TEST(StagedOutput, ShowsFilesOnlyWhenAllAreCompleteAndReplacesOnlyWhenTold) {
    const test::TemporaryFolder folder;
    const std::string place = folder.file("new/a");
    for (const auto& [text, existing] : {std::pair{"1", keep}, {"2", replace}}) {
        {
            StagedOutput givenUp(folder.file("new/"));
            put(givenUp, "a", "0");
            put(givenUp, "b", "0");
        }
        EXPECT_EQ(test::contents(place), *text == '1' ? "" : "1");
        StagedOutput stage(folder.file("new"));
        put(stage, "a", text);
        put(stage, "b", text);
        stage.commit(existing);
        EXPECT_EQ(test::contents(place), text);
    }
    EXPECT_EQ(folder.names(), Names({"new", "new/a", "new/b"}));
    StagedOutput stage(folder.file("new"));
    put(stage, "a", "3");
    EXPECT_EQ(errorOf([&] { stage.commit(keep); }), std::pair(place, EEXIST));
    EXPECT_EQ(test::contents(place), "2");
}

TEST(StagedOutput, NamesTheLaterPlaceInErrors) {
    const test::TemporaryFolder folder;
    test::store(folder.file("file"), "");
    for (const std::string& place : {folder.file("missing/deeper"), folder.file("file")})
        EXPECT_EQ(errorOf([&] { StagedOutput stage(place); }).first, place);
    StagedOutput stage(folder.path());
    const std::string tooLong(300, 'x');
    EXPECT_EQ(errorOf([&] { stage.create(tooLong); }), std::pair(folder.file(tooLong), ENAMETOOLONG));
}

}  // namespace
}  // namespace zeb
