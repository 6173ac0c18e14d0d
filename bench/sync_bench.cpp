// Measures the synchronisation of pictures and sound: the real player on a real sound server whose sound card
// is a recording.
//
//   sync_bench [SECONDS]    plays a movie of 30 frames per second (default: ten minutes of it)

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "codec/SpriteEncoder.h"
#include "format/ZEBWriter.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/sound/sdl/SDLAudioOutput.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/ThreadTasks.h"
#include "player/ZEBPlayerModel.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/player/SoundRecording.h"

namespace {

using std::chrono::duration;
using std::chrono::steady_clock;
using zeb::test::SoundRecording;

constexpr int fps = 30, storedRate = 20000;
constexpr double limit = 40;  // milliseconds

/// Writes a movie in which every second begins with a short tone.
void writeMovie(const std::string& path, int seconds) {
    zeb::SpriteEncoder encoder;
    const auto record = encoder.encodeMode32Sprite(zeb::fake::FakePicture(1), 64, 64);
    const std::vector<std::span<const std::uint8_t>> frames(fps, record);
    std::vector<std::uint8_t> sound(storedRate, 128);
    for (std::size_t i = 0; i < storedRate / 50; ++i) {
        const double phase = 2 * std::numbers::pi * 1000 * static_cast<double>(i) / storedRate;
        sound[i] = static_cast<std::uint8_t>(std::lround(128 + 120 * std::cos(phase)));
    }
    zeb::ZEBWriter writer(path, {"Beats", 64, 64, fps, 32, std::int64_t{seconds} * fps, seconds, 1, false});
    for (int second = 0; second < seconds; ++second)
        writer.writeSecond(sound, frames);
    writer.finish();
    writer.close();
}

/// The length of the recording at a moment, in seconds.
struct Heard {
    std::size_t length;
    double moment;
};

/// Returns the moments of a sound after half a second of silence.
std::vector<double> beatsOf(const std::vector<double>& samples, const std::vector<Heard>& heard) {
    std::vector<double> beats;
    std::size_t last = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::abs(samples[i]) < 0.3) continue;
        if (last == 0 || i - last > SoundRecording::rate / 2) {
            const auto there = std::ranges::upper_bound(heard, i, {}, &Heard::length);
            if (there != heard.end()) beats.push_back(there->moment);
        }
        last = i;
    }
    return beats;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? std::max(2, std::atoi(argv[1])) : 600;
    const zeb::test::TemporaryFolder folder;
    writeMovie(folder.file("beats.zeb"), seconds);
    const SoundRecording recording(folder.path());
    if (!recording.isThere()) {
        std::fprintf(stderr, "sync_bench needs PulseAudio's pulseaudio, pactl and parec.\n");
        return 1;
    }

    const zeb::SystemClock clock;
    zeb::QtMainActor mainActor;
    zeb::SDLAudioOutput output;
    zeb::ThreadTasks tasks;
    zeb::ZEBPlayerModel model({zeb::makeFileMovieReader, output, mainActor, tasks, clock});
    model.open(folder.file("beats.zeb"));

    // Times of the first picture of each second, and lengths of the recording over time.
    const auto now = [] { return duration<double>(steady_clock::now().time_since_epoch()).count(); };
    std::vector<double> shown;
    std::vector<Heard> heard;
    QObject::connect(&model, &zeb::ZEBPlayerModel::imageChanged, &model, [&] {
        if (model.isPlaying() && model.displayedFrameIndex() % fps == 0) shown.push_back(now());
    });
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &model, [&] {
        const std::size_t length = recording.length();
        if (heard.empty() || length > heard.back().length) heard.push_back({length, now()});
    });
    watch.setTimerType(Qt::PreciseTimer);
    watch.start(3);
    QObject::connect(&model, &zeb::ZEBPlayerModel::isPlayingChanged, &model, [&] {
        if (!model.isPlaying()) QTimer::singleShot(500, &application, &QCoreApplication::quit);
    });
    model.play();
    QCoreApplication::exec();

    // The first picture was shown before the start; late sound may have been left out.
    const std::vector<double> beats = beatsOf(recording.heard(), heard);
    std::vector<double> late;
    for (const double moment : shown) {
        const auto distance = [moment](double beat) { return std::abs(beat - moment); };
        const auto beat = std::ranges::min_element(beats, {}, distance);
        if (beat != beats.end() && distance(*beat) < 0.5) late.push_back(1000 * (*beat - moment));
    }
    if (static_cast<int>(shown.size()) < seconds - 1 || late.size() < shown.size() * 9 / 10) {
        std::fprintf(stderr, "%zu of %d beats heard, %zu pictures seen\n", late.size(), seconds,
                     shown.size());
        return 1;
    }
    for (std::size_t i = 1; i < late.size(); ++i) {
        if (std::abs(late[i] - late[i - 1]) > 15)
            std::printf("after %zu s: from %.1f to %.1f ms\n", i, late[i - 1], late[i]);
    }
    const std::size_t part = std::max<std::size_t>(1, late.size() / 10);
    const auto median = [](std::vector<double> values) {
        std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
        return values[values.size() / 2];
    };
    const double first = median({late.begin(), late.begin() + static_cast<std::ptrdiff_t>(part)});
    const double last = median({late.end() - static_cast<std::ptrdiff_t>(part), late.end()});
    const auto [least, most] = std::ranges::minmax(late);
    std::printf(
        "%zu beats: sound after picture by %.1f ms (median of the first tenth), %.1f ms (of the last); "
        "%.1f ... %.1f ms in all\n",
        late.size(), first, last, least, most);
    const bool isWell = std::max(std::abs(least), std::abs(most)) < limit;
    std::printf("target: always less than %.0f ms apart: %s\n", limit, isWell ? "met" : "MISSED");
    return isWell ? 0 : 1;
}
