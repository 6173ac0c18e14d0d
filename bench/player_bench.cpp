// Measures frame lateness of the player window on an offscreen display with software rendering.
//
//   player_bench [SECONDS]    plays movies of 1920 x 1080 at 30 frames per second (default: 20 s of each)

#include <QtQml/qqmlextensionplugin.h>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "codec/SpriteEncoder.h"
#include "format/ZEBWriter.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/ThreadTasks.h"
#include "player/PlaybackPeriod.h"
#include "player/window/PlayerSheetModel.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "tests/codec/SyntheticPictures.h"
#include "tests/doubles/FakeUserDefaults.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBPlayerPlugin)

namespace {

using Bytes = std::vector<std::uint8_t>;
using std::chrono::duration;
using std::chrono::steady_clock;

constexpr int width = 1920, height = 1080, fps = 30;
constexpr double refresh = 1000.0 / 60;

class MemoryPicture : public zeb::Picture {
public:
    explicit MemoryPicture(Bytes rgba) : m_rgba(std::move(rgba)) {}
    int width() const override { return ::width; }
    int height() const override { return ::height; }
    void draw(const zeb::BitmapContext& bitmap) const override {
        std::ranges::copy(m_rgba, bitmap.pixels.begin());
    }

private:
    Bytes m_rgba;
};

class SilentOutput final : public zeb::AudioOutput {
public:
    void start(std::shared_ptr<zeb::AudioSource>, Finished) override {}
    void stop(const zeb::AudioSource&) override {}
};

template <typename MakePicture>
void writeMovie(const std::string& path, int seconds, MakePicture makePicture) {
    zeb::SpriteEncoder encoder;
    std::vector<Bytes> records;
    for (unsigned i = 0; i < 5; ++i)
        records.push_back(encoder.encodeMode32Sprite(MemoryPicture(makePicture(i)), width, height));
    std::vector<std::span<const std::uint8_t>> frames;
    for (std::size_t i = 0; i < fps; ++i)
        frames.emplace_back(records[i % records.size()]);
    zeb::ZEBWriter writer(path,
                          {"Bench", width, height, fps, 32, std::int64_t{seconds} * fps, seconds, 0, false});
    for (int second = 0; second < seconds; ++second)
        writer.writeSecond({}, frames);
    writer.finish();
    writer.close();
}

struct Lateness {
    std::vector<double> shown;  ///< delay in milliseconds of each drawn picture
    std::int64_t pictures = 0;  ///< number of pictures published by the model
    double opening = 0;         ///< time to the first picture in milliseconds
    double seeking = 0;         ///< maximum of many seeks, in milliseconds
};

template <typename Work>
double millisecondsOf(Work work) {
    const auto start = steady_clock::now();
    work();
    return duration<double, std::milli>(steady_clock::now() - start).count();
}

Lateness play(zeb::ZEBPlayerWindowManager& windows, const std::string& path) {
    windows.openPlayer(zeb::URL::forFile(path), false);
    QQuickWindow* window = nullptr;
    for (QWindow* candidate : QGuiApplication::topLevelWindows()) {
        if (candidate->isVisible()) window = qobject_cast<QQuickWindow*>(candidate);
    }
    auto& sheet = *window->property("sheetModel").value<zeb::PlayerSheetModel*>();
    zeb::ZEBPlayerModel& model = *sheet.model();

    Lateness result;
    std::int64_t undrawn = -1;
    const auto period = zeb::playbackPeriod(fps);
    steady_clock::time_point start;
    QObject::connect(&model, &zeb::ZEBPlayerModel::imageChanged, &model,
                     [&] { undrawn = result.pictures++; });
    // Drawing is on this thread, so the last published picture is on the screen now.
    QObject::connect(window, &QQuickWindow::afterRendering, &model, [&] {
        if (undrawn < 0) return;
        const auto moment = start + undrawn * period;
        result.shown.push_back(duration<double, std::milli>(steady_clock::now() - moment).count());
        undrawn = -1;
    });
    QTimer::singleShot(500, &model, [&] {
        result = {};
        undrawn = -1;
        sheet.setStoredLoop(false);
        sheet.toBeginning();
        start = steady_clock::now();
        sheet.playOrPause();
        QObject::connect(&model, &zeb::ZEBPlayerModel::isPlayingChanged, &model,
                         [&] { QGuiApplication::quit(); });
    });
    QGuiApplication::exec();
    result.opening = millisecondsOf([&] { sheet.appear(); });
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        const auto frame = static_cast<std::int64_t>(random() % static_cast<unsigned>(model.totalFrames()));
        result.seeking = std::max(result.seeking, millisecondsOf([&] { model.seek(frame); }));
    }
    sheet.close();
    return result;
}

bool report(const char* name, Lateness lateness, std::int64_t expected) {
    std::ranges::sort(lateness.shown);
    const auto at = [&](double part) {
        return lateness.shown.empty() ? 0
                                      : lateness.shown[static_cast<std::size_t>(
                                            part * static_cast<double>(lateness.shown.size() - 1))];
    };
    const auto drawn = static_cast<std::int64_t>(lateness.shown.size());
    std::printf(
        "%-14s %4lld pictures, %lld not drawn; late by %5.1f ms (median), %5.1f ms (p99), %5.1f ms (most)\n",
        name, static_cast<long long>(drawn), static_cast<long long>(expected - drawn), at(0.5), at(0.99),
        at(1));
    std::printf("%-14s first picture after %.1f ms, seeks of at most %.1f ms\n", "", lateness.opening,
                lateness.seeking);
    return drawn == expected && at(0.99) < refresh;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QQuickStyle::setStyle("ZEBStyle");
    QQuickStyle::setFallbackStyle("Fusion");
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;

    zeb::NotificationCenter notifications;
    zeb::fake::FakeUserDefaults defaults(notifications);
    zeb::QtMainActor mainActor;
    zeb::SystemClock clock;
    SilentOutput output;
    zeb::ThreadTasks tasks;
    QQmlEngine engine;
    engine.addImportPath("qrc:/qt/qml");
    zeb::ZEBPlayerWindowManager windows(
        {engine, {zeb::makeFileMovieReader, output, mainActor, tasks, clock}, defaults, notifications, {}});

    const std::string path = (std::filesystem::temp_directory_path() / "zeb-player-bench.zeb").string();
    const struct {
        const char* name;
        Bytes (*picture)(int, int, unsigned);
    } movies[] = {{"natural", zeb::synthetic::natural}, {"noise", zeb::synthetic::noise}};
    bool isWell = true;
    for (const auto& movie : movies) {
        writeMovie(path, seconds, [&](unsigned i) { return movie.picture(width, height, i); });
        isWell &= report(movie.name, play(windows, path),
                         std::int64_t{seconds} * fps - 1);  // the first picture is shown at the start
    }
    std::filesystem::remove(path);
    std::printf("target: every picture drawn, p99 below %.1f ms: %s\n", refresh, isWell ? "met" : "MISSED");
    return isWell ? 0 : 1;
}
