#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using ::testing::HasSubstr;
using Clock = std::chrono::steady_clock;

class Interrupt : public ClipTest {
protected:
    void SetUp() override {
        ClipTest::SetUp();
        // A minute: the conversion will not be done before the signal comes.
        if (!IsSkipped()) makeLongClip(m_folder.file("long.mkv"), "1280x720", 60, 60);
    }

    // Starts a conversion and reads its progress up to a line of the wanted type with at least `frames`.
    void startUntil(const std::string& type, int frames) {
        m_zeb.emplace(zebCommand({"encode", "--progress", "json", "long.mkv", "a.mov"}), m_options);
        while (const auto line = m_zeb->readLine()) {
            const auto json = nlohmann::json::parse(*line);
            if (json["type"] == type && json.value("frames", 0) >= frames) return;
        }
        FAIL() << "the conversion ended early: " << m_zeb->finish().error;
    }

    std::string m_movie = m_folder.file("long.zeb");
    std::optional<ChildProcess> m_zeb;
};

TEST_F(Interrupt, MakesAShorterMovie) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ASSERT_NO_FATAL_FAILURE(startUntil("progress", 61));
        const auto start = Clock::now();
        m_zeb->sendSignal(signal);
        const auto result = m_zeb->finish();
        // A tenth of a second to stop; the rest is for the disk and for busy test machines.
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_THAT(result.error, HasSubstr("zeb: long.mkv: interrupted; long.zeb was finished after "));
        const auto last =
            nlohmann::json::parse(result.out.substr(result.out.rfind('\n', result.out.size() - 2) + 1));
        EXPECT_EQ(last["exitCode"], 130);
        EXPECT_EQ(last["keptSeconds"], rightMovie(m_movie).seconds);
        // The interrupt ends everything: the next input is not even looked at.
        EXPECT_FALSE(std::filesystem::exists(m_folder.file("a.zeb")));
        std::filesystem::remove(m_movie);
    }
}

TEST_F(Interrupt, EndsAtOnceTheSecondTime) {
    ASSERT_NO_FATAL_FAILURE(startUntil("progress", 61));
    // Stopped, it gets both before it can act on the first.
    for (const int signal : {SIGSTOP, SIGINT, SIGCONT, SIGINT})
        m_zeb->sendSignal(signal);
    const int exitCode = m_zeb->finish().exitCode;
    EXPECT_TRUE(exitCode == -SIGINT || exitCode == 130) << exitCode;
    EXPECT_TRUE(std::filesystem::exists(m_movie));
}

}  // namespace
}  // namespace zeb::test
