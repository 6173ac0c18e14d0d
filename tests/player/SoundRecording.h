#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/cli/ChildProcess.h"

namespace zeb::test {

/// A sound server of our own (PulseAudio), to which this process then plays, and what its only output is
/// given.
class SoundRecording {
public:
    static constexpr int rate = 48000;  ///< frames per second

    /// Starts server and recording, which live in `folder` until this object's end.
    explicit SoundRecording(const std::string& folder);

    /// False when the programs pulseaudio, pactl and parec are not all there.
    bool isThere() const { return m_isThere && length() > 0; }
    /// How many frames have been recorded.
    std::uintmax_t length() const;
    /// The left channel of all that has been recorded.
    std::vector<double> heard() const;

private:
    std::string m_file;
    bool m_isThere = false;
    std::unique_ptr<ChildProcess> m_server;
    std::unique_ptr<ChildProcess> m_recorder;
};

}  // namespace zeb::test
