#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "format/check/MovieCheck.h"
#include "tests/cli/ChildProcess.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {

/// Runs `zeb` with `arguments` to its end.
ChildProcess::Result runZeb(std::vector<std::string> arguments, const ChildProcess::Options& options = {});

/// The words that start `zeb` with `arguments`.
std::vector<std::string> zebCommand(std::vector<std::string> arguments);

/// What the whole of a movie says that has no fault, byte by byte; throws when it has one.
MovieCheck rightMovie(const std::string& path);

/// Makes a file with the `ffmpeg` program and the arguments that stand before the output. Throws when it
/// fails.
void makeClip(const std::string& path, const std::vector<std::string>& arguments);

/// Moving pictures that keep a machine busy: `size` at `fps`, `seconds` long, without sound. Beside it stays
/// the second that it repeats.
void makeLongClip(const std::string& path, const std::string& size, int fps, int seconds);

/// Runs `zeb` in a folder of its own.
class ProgramTest : public ::testing::Test {
protected:
    ChildProcess::Result zeb(std::vector<std::string> arguments) {
        return runZeb(std::move(arguments), m_options);
    }
    /// Ends with one line that holds `text`, and without a new file.
    void expectFailure(const std::vector<std::string>& arguments, int exitCode, const std::string& text);

    TemporaryFolder m_folder;
    ChildProcess::Options m_options{.folder = m_folder.path()};
};

/// With a clip "a.mov" in the folder: 2.5 seconds of 160 x 120 at 10 frames per second, with a stereo tone.
class ClipTest : public ProgramTest {
protected:
    void SetUp() override;
};

}  // namespace zeb::test
