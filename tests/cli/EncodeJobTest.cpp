#include "cli/EncodeJob.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "cli/UsageError.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::cli {
namespace {

std::vector<EncodeJob> plan(std::vector<std::string> inputs, std::optional<std::string> output = {}) {
    EncodeArguments arguments;
    arguments.inputs = std::move(inputs);
    arguments.output = std::move(output);
    return planJobs(arguments);
}

TEST(EncodeJobs, NameTheirOutputs) {
    const test::TemporaryFolder temporary;
    const std::string folder = temporary.path();
    const struct {
        std::string input;
        std::optional<std::string> output;
        std::string expected;
    } cases[] = {
        {"a.b.mp4", {}, "a.b.zeb"},
        {"in.x/a", {}, "in.x/a.zeb"},
        {"in/a.mp4", folder, folder + "/a.zeb"},
        {"in/a.mp4", folder + "/", folder + "/a.zeb"},
        {"in/a.mp4", "missing/", "missing/a.zeb"},
    };
    for (const auto& [input, output, expected] : cases)
        EXPECT_EQ(plan({input}, output)[0].output, expected);
}

TEST(EncodeJobs, RefuseWhatWouldCollide) {
    const test::TemporaryFolder temporary;
    const std::string folder = temporary.path();
    std::filesystem::create_directory_symlink(folder, folder + "/link");
    test::store(folder + "/old.zeb", "a movie");

    EXPECT_THROW(plan({""}), UsageError);
    EXPECT_THROW(plan({"a.mp4", "b.mp4"}, folder + "/one.zeb"), UsageError);
    EXPECT_THROW(plan({"a.mp4", "./a.mov"}), UsageError);
    EXPECT_THROW(plan({folder + "/a.mp4", folder + "/link/a.mov"}), UsageError);
    EXPECT_THROW(plan({"x/a.mp4", "y/a.mp4"}, folder), UsageError);
    // The movie of one input would replace another input.
    EXPECT_THROW(plan({folder + "/old.mp4", folder + "/old.zeb"}, folder), UsageError);

    EXPECT_EQ(plan({"x/a.mp4", "y/a.mp4"}).size(), 2u);
    EXPECT_EQ(plan({"a.mp4", "b.mp4"}, folder).size(), 2u);
    // Its own input is refused when its turn comes, as a failure of that one input.
    EXPECT_EQ(plan({folder + "/old.zeb"}).size(), 1u);
}

}  // namespace
}  // namespace zeb::cli
