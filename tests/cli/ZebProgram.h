#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "format/check/MovieCheck.h"
#include "tests/cli/ChildProcess.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {

/// Runs `zeb` with `arguments` and waits for its end.
ChildProcess::Result runZeb(std::vector<std::string> arguments, const ChildProcess::Options& options = {});

/// The command line of `zeb` with `arguments`.
std::vector<std::string> zebCommand(std::vector<std::string> arguments);

/// Checks every byte of a movie. Throws if there is a fault.
MovieCheck rightMovie(const std::string& path);

/// Runs `ffmpeg` with these arguments and `path` as the output. Throws if it fails.
void makeClip(const std::string& path, const std::vector<std::string>& arguments);

/// Makes a video without sound that takes long to convert. It repeats one second, whose file stays beside it.
void makeLongClip(const std::string& path, const std::string& size, int fps, int seconds);

/// Reads lines of `--progress json` until one reports more than `frames` frames.
void awaitFrames(ChildProcess& zeb, int frames);

/// Runs `zeb` in a temporary folder.
class ProgramTest : public ::testing::Test {
protected:
    ChildProcess::Result zeb(std::vector<std::string> arguments) {
        return runZeb(std::move(arguments), m_options);
    }
    /// Expects this exit code, one error line that contains `text`, and no new file.
    void expectFailure(const std::vector<std::string>& arguments, int exitCode, const std::string& text);

    TemporaryFolder m_folder;
    ChildProcess::Options m_options{.folder = m_folder.path()};
};

/// Adds a clip "a.mov" to the folder: 2.5 seconds of 160 x 120 at 10 frames per second, with a stereo tone.
class ClipTest : public ProgramTest {
protected:
    void SetUp() override;
};

}  // namespace zeb::test
