#include "ui/ContentViewModel.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "format/ZEBConverterError.h"
#include "platform/LocalizedText.h"
#include "platform/fake/FakeMedia.h"
#include "platform/fake/FakePanels.h"
#include "platform/fake/FakeUserDefaults.h"
#include "platform/fake/HandDrivenClock.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "platform/fake/HandDrivenTasks.h"
#include "tests/platform/TemporaryFolder.h"
#include "ui/PresetMenu.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class RecordingSounds final : public SoundEffects {
public:
    void play(SoundEffect effect) override { played.push_back(effect); }
    std::vector<SoundEffect> played;
};

class RecordingDock final : public DockProgress {
public:
    void update(double progress) override { shown.push_back(progress); }
    void clear() override { shown.push_back(-1); }
    std::vector<double> shown;
};

class ContentViewModelTest : public testing::Test {
protected:
    ContentViewModelTest() {
        fake::FakeFilm film;
        film.videoTracks = {{{1920, 1080}, {}, 25}};
        film.duration = 10;
        films.add(input, film);
        film.duration = 100'000;
        films.add("/films/long.mov", film);
        converter = std::make_unique<ConverterViewModel>(
            ConverterServices{films,
                              [this](const std::string&, const std::string& output, const Settings&,
                                     const ConversionCallbacks& callbacks) { run(callbacks, output); },
                              defaults, panels, pasteboard, sounds, scope, mainActor, tasks, clock});
        content = std::make_unique<ContentViewModel>(ContentServices{
            *converter, defaults, notifications, mainActor, clock, films, tasks, panels, sounds, dock,
            requests, [this](const URL& url, bool hideMaker) { opened.emplace_back(url.path(), hideMaker); },
            "1.2", "7"});
    }
    ~ContentViewModelTest() override {
        content.reset();
        converter.reset();
    }

    void settle() {
        do {
            tasks.runAll();
        } while (mainActor.run() > 0 || tasks.waiting() > 0);
    }
    void takeFilm(const std::string& path) {
        converter->setInput(URL::forFile(path));
        settle();
    }
    std::string selected() const { return content->presetTitles().at(content->presetIndex()).toStdString(); }
    void setSize(int width, int height) {
        Settings settings = converter->settings()->value();
        settings.width = width;
        settings.height = height;
        converter->settings()->setValue(settings);
    }

    test::TemporaryFolder folder;
    const std::string input = folder.file("holiday.mov");
    const std::string movie = folder.file("holiday.zeb");
    fake::FakeLibrary films;
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    fake::FakePanels panels;
    fake::FakePasteboard pasteboard;
    RecordingSounds sounds;
    RecordingDock dock;
    OpenSecurityScope scope;
    fake::HandDrivenMainActor mainActor;
    fake::HandDrivenTasks tasks;
    fake::HandDrivenClock clock;
    AppActionRouter requests;
    std::vector<std::pair<std::string, bool>> opened;
    std::function<void(const ConversionCallbacks&, const std::string&)> run;
    std::unique_ptr<ConverterViewModel> converter;
    std::unique_ptr<ContentViewModel> content;
};

TEST_F(ContentViewModelTest, PresetsAndSizeFollowEachOther) {
    postApplyPreset(notifications, 1280, 720);
    EXPECT_EQ(converter->settings()->width(), Settings().width) << "not on screen";
    content->appear();
    EXPECT_EQ(selected(), "Custom size");
    setSize(1280, 720);
    EXPECT_EQ(selected(), "HD");

    std::vector<std::string> shown;
    QObject::connect(content.get(), &ContentViewModel::presetsChanged, [&] { shown.push_back(selected()); });
    content->setPresetIndex(3);
    settle();
    EXPECT_EQ(converter->settings()->width(), 1920);
    EXPECT_EQ(converter->settings()->height(), 1080);
    EXPECT_THAT(shown, Each("Full HD")) << "no flash of the custom size between width and height";

    postApplyPreset(notifications, 720, 576);
    settle();
    EXPECT_EQ(selected(), "DVD");
    converter->settings()->setWidth(728);
    EXPECT_EQ(selected(), "Custom size");
    // Somebody edits the presets in another window.
    defaults.set("presetDVDW", 728);
    EXPECT_EQ(selected(), "DVD");
    defaults.set("customPresets", PropertyArray{PropertyDictionary{{"name", "äpfel"}, {"w", 640}, {"h", 480}},
                                                PropertyDictionary{{"name", "Zebra"}, {"w", 320}, {"h", 240}},
                                                PropertyDictionary{{"name", "Apfel"}, {"w", 64}, {"h", 64}}});
    EXPECT_THAT(content->presetTitles(),
                ElementsAre("Custom size", "DVD", "HD", "Full HD", "Apfel", "äpfel", "Zebra"));
    setSize(640, 480);
    EXPECT_EQ(selected(), "äpfel");
    setSize(640, 488);
    EXPECT_EQ(selected(), "Custom size");
    // Built-in ones match first, but one of the same size can be chosen, until it is deleted.
    defaults.set("customPresets", PropertyArray{PropertyDictionary{{"name", "TV"}, {"w", 1280}, {"h", 720}}});
    content->setPresetIndex(4);
    EXPECT_EQ(selected(), "TV");
    settle();
    defaults.set("customPresets", PropertyArray{});
    EXPECT_EQ(selected(), "HD");
    content->setPresetIndex(0);
    EXPECT_EQ(converter->settings()->width(), 1280) << "custom is no size of its own";
    setSize(1920, 1080);
    EXPECT_EQ(selected(), "Full HD") << "at once";
}

TEST_F(ContentViewModelTest, AppliesOnlySizesThatTheMenuSends) {
    content->appear();
    setSize(512, 256);
    for (const PropertyDictionary& info :
         {PropertyDictionary{}, PropertyDictionary{{"width", "640"}, {"height", 480}},
          PropertyDictionary{{"width", 640}}, PropertyDictionary{{"width", 640}, {"height", 480.0}}}) {
        notifications.post("ZEBMaker.applyPreset", info);
    }
    EXPECT_EQ(converter->settings()->width(), 512);
    postApplyPreset(notifications, std::int64_t{1} << 40, -5);
    EXPECT_EQ(converter->settings()->width(), std::numeric_limits<int>::max());
    EXPECT_EQ(converter->settings()->height(), -5);
}

TEST_F(ContentViewModelTest, CarriesRequestsOut) {
    std::ofstream(movie) << "movie";
    requests.post(EncodeAction{URL::forFile(input)});
    EXPECT_FALSE(converter->inputURL());
    content->appear();
    EXPECT_EQ(converter->inputPath().toStdString(), input);

    requests.post(PlayAction{URL::forFile(folder.file("./holiday.zeb")), true});
    EXPECT_THAT(opened, ElementsAre(std::pair(movie, true)));
    EXPECT_THAT(sounds.played, ElementsAre(SoundEffect::nowEstablishingDatalink));

    for (const std::string& missing :
         {"file://" + folder.file("missing.zeb"), "http://127.0.0.1" + movie, std::string("holiday.zeb")}) {
        converter->setLastError({});
        requests.post(PlayAction{*URL::parse(missing), true});
        EXPECT_THAT(converter->lastError().value_or(""), HasSubstr(".zeb")) << missing;
    }
    EXPECT_EQ(opened.size(), 1U);
    EXPECT_EQ(sounds.played.size(), 1U);
}

TEST_F(ContentViewModelTest, PlaysWhatWasMadeOrAsks) {
    content->playMovie();
    testing::internal::CaptureStdout();
    panels.answer(std::nullopt);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                StartsWith("ZEB-Auswahl abgebrochen/fehlgeschlagen: "));
    std::ofstream(movie) << "movie";
    content->playMovie();
    EXPECT_THAT(panels.openPanel().contentTypes,
                ElementsAre(ContentType{ContentType::filenameExtension, "zeb"}));
    panels.answer(movie);

    run = [](const ConversionCallbacks&, const std::string&) {};
    takeFilm(input);
    converter->start();
    settle();
    content->playMovie();
    EXPECT_EQ(panels.count(), 0U);
    EXPECT_THAT(opened, ElementsAre(std::pair(movie, false), std::pair(movie, false)));
}

TEST_F(ContentViewModelTest, ShowsHowTheRunGoesOn) {
    takeFilm(input);
    std::vector<std::string> shown;
    run = [&](const ConversionCallbacks& callbacks, const std::string& output) {
        const auto advance = [&](double fraction) {
            callbacks.progress("…", fraction);
            mainActor.run();
            shown.push_back(content->timesText().toStdString());
        };
        advance(0);
        std::ofstream(output) << std::string(3'449'000, 'x');
        clock.advance(seconds(3));
        advance(0.125);
        clock.advance(seconds(10));
        advance(0.25);
        clock.advance(seconds(1));
        int ticks = 0;
        const auto connection =
            QObject::connect(content.get(), &ContentViewModel::timesTextChanged, [&ticks] { ++ticks; });
        mainActor.pass(milliseconds(2500));
        EXPECT_EQ(ticks, 2) << "the elapsed time moves while there is no progress";
        QObject::disconnect(connection);
    };
    converter->start();
    settle();
    EXPECT_THAT(shown, ElementsAre("Remaining: —   Elapsed: 0:00   Size: —",
                                   "Remaining: —   Elapsed: 0:03   Size: 3.4 MB",
                                   "Remaining: 1:00   Elapsed: 0:13   Size: 3.4 MB"));
    EXPECT_EQ(content->timesText(), "Remaining: —   Elapsed: —   Size: 3.4 MB") << "the size stays";
    EXPECT_THAT(dock.shown, ElementsAre(0, 0.125, 0.25, 1, -1));
    mainActor.pass(seconds(5));
    EXPECT_EQ(content->elapsedText(), "—");
}

TEST_F(ContentViewModelTest, SettingsThatDependOnEachOther) {
    EXPECT_EQ(content->versionText(), "v1.2 (7)");
    EXPECT_EQ(content->sourceTargetText(), "");
    takeFilm(input);
    EXPECT_THAT(content->sourceTargetText().toStdString(), HasSubstr("1920 × 1080, 25 fps, Mode 32"));
    converter->settings()->setQlModeNumber(4);
    converter->settings()->setDither(true);
    EXPECT_THAT(content->sourceTargetText().toStdString(), HasSubstr("Mode 4"));
    converter->settings()->setQlModeNumber(32);
    EXPECT_FALSE(converter->settings()->dither());
}

TEST_F(ContentViewModelTest, ForecastsTheSize) {
    const auto forecast = [this](const std::string& path) {
        takeFilm(path);
        mainActor.pass(seconds(1));
        settle();
        return content->forecastText().toStdString();
    };
    converter->settings()->setQlModeNumber(4);
    EXPECT_EQ(content->forecastText(), "");
    EXPECT_THAT(forecast(input), StartsWith("Size of the movie: "));
    EXPECT_FALSE(content->forecastIsWarning());
    EXPECT_THAT(forecast("/films/long.mov"),
                testing::AllOf(StartsWith("Too large: "), HasSubstr("It fits ")));
    EXPECT_TRUE(content->forecastIsWarning());

    // What will not fit is started after a question only, and the question goes with its reason.
    content->start();
    EXPECT_EQ(content->misfitQuestion(), content->forecastText());
    content->dismissMisfitQuestion();
    EXPECT_EQ(content->misfitQuestion(), "");
    EXPECT_FALSE(converter->isRunning());
    content->start();
    forecast(input);
    EXPECT_EQ(content->misfitQuestion(), "");
    forecast("/films/long.mov");
    content->start();
    content->startAnyway();
    EXPECT_EQ(content->misfitQuestion(), "");
    EXPECT_TRUE(converter->isRunning());
}

TEST_F(ContentViewModelTest, TakesWhatIsDropped) {
    content->appear();
    std::ofstream(movie) << "movie";
    const auto local = [](const std::string& path) {
        return QUrl::fromLocalFile(QString::fromStdString(path));
    };
    content->takeDroppedURLs(
        {local("/films/long.mov"), local(movie), local(input), QUrl("https://example.org/a.mp4")});
    EXPECT_EQ(converter->inputPath().toStdString(), input);
    EXPECT_THAT(opened, ElementsAre(std::pair(movie, false)));
}

TEST_F(ContentViewModelTest, AsksAboutTheUnfinishedMovie) {
    takeFilm(input);
    run = [this](const ConversionCallbacks&, const std::string& output) {
        std::ofstream(output) << "movie";
        converter->cancel();
        throw ZEBConverterError::cancelled();
    };
    EXPECT_EQ(content->cancelledOutputQuestion(), "");
    converter->start();
    settle();
    EXPECT_THAT(content->cancelledOutputQuestion().toStdString(), HasSubstr("holiday.zeb"));
    content->dismissCancelledOutputQuestion();
    EXPECT_EQ(content->cancelledOutputQuestion(), "");
    EXPECT_EQ(converter->logLines().back(), localizedText("log_cancelled_output_kept_format", {movie}));
}

}  // namespace
}  // namespace zeb
