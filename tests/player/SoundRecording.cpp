#include "tests/player/SoundRecording.h"

#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace zeb::test {

using namespace std::chrono_literals;

SoundRecording::SoundRecording(const std::string& folder) : m_file(folder + "/heard") {
    const std::string socket = folder + "/socket";
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    setenv("SDL_AUDIODRIVER", "pulseaudio", 1);
    m_server = std::make_unique<ChildProcess>(
        std::vector<std::string>{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                 "--use-pid-file=no", "--high-priority=yes", "-L",
                                 "module-null-sink sink_name=heard rate=48000 channels=2 format=float32le",
                                 "-L", "module-native-protocol-unix auth-anonymous=1 socket=" + socket},
        ChildProcess::Options());
    const auto answers = [] { return ChildProcess({"pactl", "info"}, {}).finish().exitCode == 0; };
    for (int i = 0; i < 100 && !(m_isThere = answers()); ++i)
        std::this_thread::sleep_for(100ms);
    if (!m_isThere) return;
    m_recorder = std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c",
                                 "exec parec -d heard.monitor --latency-msec=10 --format=float32le "
                                 "--rate=48000 --channels=2 > '" +
                                     m_file + "'"},
        ChildProcess::Options());
    for (int i = 0; i < 100 && length() == 0; ++i)
        std::this_thread::sleep_for(100ms);
}

std::uintmax_t SoundRecording::length() const {
    std::error_code error;
    const auto size = std::filesystem::file_size(m_file, error);
    return error ? 0 : size / (2 * sizeof(float));
}

std::vector<double> SoundRecording::heard() const {
    std::ifstream file(m_file, std::ios::binary);
    std::vector<double> samples;
    for (float pair[2]; file.read(reinterpret_cast<char*>(pair), sizeof pair);)
        samples.push_back(pair[0]);
    return samples;
}

}  // namespace zeb::test
