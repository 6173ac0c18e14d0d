#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/StrictMovie.h"
#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

using ::testing::HasSubstr;
using Clock = std::chrono::steady_clock;

class Interrupt : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "needs the ffmpeg program to make its clips";
        // A minute: the conversion will not be done before the signal comes.
        makeLongClip(m_clip, 1280, 720, 60, 60);
    }

    // Starts a conversion and reads its progress up to a line of the wanted type with at least `frames`.
    void startUntil(const std::string& type, int frames) {
        m_zeb.emplace(zebCommand({"encode", "--progress", "json", m_clip, m_folder.file("next.mkv")}),
                      ChildProcess::Options{});
        while (const auto line = m_zeb->readLine()) {
            const auto json = nlohmann::json::parse(*line);
            if (json["type"] == type && json.value("frames", 0) >= frames) return;
        }
        FAIL() << "the conversion ended early: " << m_zeb->finish().error;
    }

    TemporaryFolder m_folder;
    std::string m_clip = m_folder.file("long.mkv");
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
        EXPECT_THAT(result.error,
                    HasSubstr("zeb: " + m_clip + ": interrupted; " + m_movie + " was finished after "));
        // The interrupt ends everything: the next input is not even looked at.
        EXPECT_THAT(result.error, ::testing::Not(HasSubstr("next.mkv")));
        const auto last =
            nlohmann::json::parse(result.out.substr(result.out.rfind('\n', result.out.size() - 2) + 1));
        EXPECT_EQ(last["exitCode"], 130);

        const StrictMovie movie = readStrictly(m_movie);
        EXPECT_EQ(last["keptSeconds"], movie.seconds);
        std::filesystem::remove(m_movie);
    }
}

TEST_F(Interrupt, LeavesNothingWithoutAWholeSecond) {
    // On a busy machine the signal may come after the first second all the same.
    for (int attempt = 0; attempt < 5; ++attempt) {
        ASSERT_NO_FATAL_FAILURE(startUntil("start", 0));
        m_zeb->sendSignal(SIGINT);
        const auto result = m_zeb->finish();
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_THAT(result.error, HasSubstr("zeb: " + m_clip + ": interrupted"));
        const bool isKept = result.error.find("finished after") != std::string::npos;
        EXPECT_EQ(std::filesystem::exists(m_movie), isKept);
        if (!isKept) return;
        std::filesystem::remove(m_movie);
    }
    FAIL() << "never interrupted within the first second";
}

TEST_F(Interrupt, EndsAtOnceTheSecondTime) {
    ASSERT_NO_FATAL_FAILURE(startUntil("progress", 61));
    // Stopped, it gets both before it can act on the first.
    m_zeb->sendSignal(SIGSTOP);
    m_zeb->sendSignal(SIGINT);
    m_zeb->sendSignal(SIGCONT);
    m_zeb->sendSignal(SIGINT);
    const int exitCode = m_zeb->finish().exitCode;
    EXPECT_TRUE(exitCode == -SIGINT || exitCode == 130) << exitCode;
    EXPECT_TRUE(std::filesystem::exists(m_movie));
}

}  // namespace
}  // namespace zeb::test
