#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <functional>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "format/ZEBWriter.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/sound/sdl/SDLAudioOutput.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/ThreadTasks.h"
#include "player/ZEBPlayerModel.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/player/SoundRecording.h"

// The audible sound: the real player on a real sound server that records its output.

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr int heardRate = test::SoundRecording::rate;
constexpr int storedRate = 20000;
constexpr int fps = 25;
constexpr int seconds = 8;

/// The movie's sound at a time in seconds: a rising tone, so that each part of it is unique. The wave is zero
/// at whole seconds, so that loops between them have no step.
double wave(double moment) {
    return 0.75 * std::sin(2 * std::numbers::pi * (200 * moment + 60 * moment * moment));
}

void writeMovie(const std::string& path) {
    // A record that does not decode to a picture: 2 bytes.
    const std::vector<std::uint8_t> record = {0, 0};
    const std::vector<std::span<const std::uint8_t>> frames(fps, record);
    ZEBWriter writer(path, {"Tone", 64, 64, fps, 32, seconds * fps, seconds, 1, false});
    for (int second = 0; second < seconds; ++second) {
        std::vector<std::uint8_t> sound;
        for (int i = 0; i < storedRate; ++i) {
            const double value = wave(second + static_cast<double>(i) / storedRate);
            sound.push_back(static_cast<std::uint8_t>(std::lround(128 + 128 * value)));
        }
        writer.writeSecond(sound, frames);
    }
    writer.finish();
    writer.close();
}

/// Parts of the recording between silences of at least 0.1 s.
std::vector<std::vector<double>> stretches(const std::vector<double>& samples) {
    std::vector<std::vector<double>> result;
    std::vector<double> stretch;
    std::size_t silent = 0;
    const auto end = [&] {
        if (stretch.size() > silent)
            result.emplace_back(stretch.begin(), stretch.end() - static_cast<std::ptrdiff_t>(silent));
        stretch.clear();
        silent = 0;
    };
    for (const double sample : samples) {
        const bool isSilent = std::abs(sample) < 0.002;
        if (isSilent && stretch.empty()) continue;
        stretch.push_back(sample);
        silent = isSilent ? silent + 1 : 0;
        if (silent == heardRate / 10) end();
    }
    end();
    return result;
}

/// The RMS error of a recorded part that should play from `start` to the end of the movie and then loop from
/// `loopStart`, in seconds. Ignores fading at both ends.
double errorOf(const std::vector<double>& stretch, double start, double loopStart) {
    constexpr std::size_t faded = heardRate / 50;
    double sum = 0;
    for (std::size_t i = faded; i + faded < stretch.size(); ++i) {
        double moment = start + static_cast<double>(i) / heardRate;
        if (moment >= seconds) moment = loopStart + std::fmod(moment - seconds, seconds - loopStart);
        const double error = stretch[i] - wave(moment);
        sum += error * error;
    }
    return std::sqrt(sum / static_cast<double>(stretch.size() - 2 * faded));
}

/// The time in the movie at which a recorded part starts. Searches near `expected`.
double startOf(const std::vector<double>& stretch, double expected) {
    constexpr std::size_t faded = heardRate / 50;
    double best = 0;
    double least = 1e9;
    for (double start = expected - 0.06; start < expected + 0.06; start += 0.000004) {
        double sum = 0;
        for (std::size_t i = faded; i < heardRate / 2 && i < stretch.size(); i += 37) {
            const double error = stretch[i] - wave(start + static_cast<double>(i) / heardRate);
            sum += error * error;
        }
        if (sum >= least) continue;
        least = sum;
        best = start;
    }
    return best;
}

double largestStep(const std::vector<double>& samples) {
    double largest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - 1]));
    return largest;
}

/// Runs the event loop until `condition` is true. Returns false after `limit`.
bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit = 20s) {
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (condition()) loop.exit(1);
    });
    QTimer::singleShot(limit, &loop, [&loop] { loop.exit(0); });
    poll.start(5);
    return condition() || loop.exec() == 1;
}

void pass(std::chrono::milliseconds time) {
    waitFor([] { return false; }, time);
}

/// Plays three parts of the movie: from its start, from second 4, and from the last second in a loop.
void play(const std::string& movie) {
    const SystemClock clock;
    QtMainActor mainActor;
    SDLAudioOutput output;
    ThreadTasks tasks;
    ZEBPlayerModel model({makeFileMovieReader, output, mainActor, tasks, clock});
    const auto playUntil = [&](std::int64_t frame) {
        model.play();
        EXPECT_TRUE(waitFor([&] { return model.displayedFrameIndex() >= frame; }));
        model.pause();
        pass(400ms);
    };
    model.open(movie);
    // The first sound opens the device, so its recording is ignored.
    model.play();
    EXPECT_TRUE(waitFor([&] { return output.isOpen(); }));
    model.pause();
    pass(400ms);
    model.seek(0);
    playUntil(30);
    model.seek(4 * fps);
    playUntil(5 * fps);
    model.setLooping(true);
    model.seek(7 * fps - 1);
    model.play();
    pass(2500ms);
    model.unload();
    pass(400ms);
}

/// Faults of each of the three parts. Empty if a part is correct.
std::array<std::string, 3> faultsOf(const std::vector<double>& heard) {
    std::array<std::string, 3> result;
    const auto parts = stretches(heard);
    if (parts.size() < 3) return {"not heard", "not heard", "not heard"};
    // Playback continues after the frame on screen.
    const struct {
        double start, length, loopStart;
    } expected[] = {{0.04, 1.16, 0}, {4.04, 0.96, 0}, {7, 2.5, 0}};
    for (std::size_t i = 0; i < 3; ++i) {
        std::ostringstream faults;
        const auto& part = parts[parts.size() - 3 + i];
        const double start = startOf(part, expected[i].start);
        if (std::abs(start - expected[i].start) > 0.003) faults << "begins at " << start << "; ";
        const double length = static_cast<double>(part.size()) / heardRate;
        if (std::abs(length - expected[i].length) > 0.2) faults << "lasts " << length << "; ";
        // Quantisation to 8 bits has an RMS error of 0.0023.
        const double error = errorOf(part, start, expected[i].loopStart);
        if (error > 0.01) faults << "has an error of " << error << "; ";
        // The largest step of the wave itself is 0.114. The part starts and ends with silence.
        const double step = std::max({largestStep(part), std::abs(part.front()), std::abs(part.back())});
        if (step > 0.13) faults << "has a click of " << step << "; ";
        result[i] = faults.str();
    }
    return result;
}

TEST(HeardSoundTest, MatchesSoundOfMovie) {
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    // On a busy machine the sound server may leave random gaps, but faults of the player repeat. So each part
    // must be correct in at least one attempt.
    std::array<std::string, 3> faults = {"not tried", "not tried", "not tried"};
    for (int attempt = 0; attempt < 8 && faults != std::array<std::string, 3>(); ++attempt) {
        const test::TemporaryFolder folder;
        const std::string movie = folder.file("tone.zeb");
        writeMovie(movie);
        const test::SoundRecording recording(folder.path());
        if (!recording.isThere()) GTEST_SKIP() << "needs PulseAudio's pulseaudio, pactl and parec";
        play(movie);
        const auto newFaults = faultsOf(recording.heard());
        for (std::size_t i = 0; i < faults.size(); ++i) {
            if (!faults[i].empty()) faults[i] = newFaults[i];
        }
    }
    for (const std::string& fault : faults)
        EXPECT_EQ(fault, "");
}

}  // namespace
}  // namespace zeb
