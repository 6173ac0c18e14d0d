#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/cli/ChildProcess.h"

namespace zeb::test {

/// A private PulseAudio server for this process, and a recording of its only output.
class SoundRecording {
public:
    static constexpr int rate = 48000;  ///< frames per second

    /// Starts server and recorder with their files in `folder`. The destructor ends both.
    explicit SoundRecording(const std::string& folder);

    /// False if pulseaudio, pactl or parec is missing.
    bool isThere() const { return m_isThere && length() > 0; }
    /// Number of recorded frames.
    std::uintmax_t length() const;
    /// The left channel of the recording.
    std::vector<double> heard() const;

private:
    std::string m_file;
    bool m_isThere = false;
    std::unique_ptr<ChildProcess> m_server;
    std::unique_ptr<ChildProcess> m_recorder;
};

}  // namespace zeb::test
