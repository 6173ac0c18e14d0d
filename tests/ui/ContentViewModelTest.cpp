#include "ui/model/ContentViewModel.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "format/ZEBErrors.h"
#include "platform/text/LocalizedText.h"
#include "tests/conversion/model/ConverterTest.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class RecordingDock final : public DockProgress {
public:
    void update(double progress) override { shown.push_back(progress); }
    void clear() override { shown.push_back(-1); }
    std::vector<double> shown;
};

class ContentViewModelTest : public test::ConverterTest {
protected:
    ContentViewModelTest() {
        fake::FakeFilm film;
        film.videoTracks = {{{1920, 1080}, {}, 25}};
        film.duration = 10;
        films.add(input, film);
        film.duration = 100'000;
        films.add(longFilm, film);
    }
    ~ContentViewModelTest() override { content.reset(); }

    /// Sets the input and waits for its analysis and forecast.
    void takeFilm(const std::string& path) {
        ConverterTest::takeFilm(path);
        passPatience();
    }
    void passPatience() {
        mainActor.pass(seconds(1));
        settle();
    }

    std::string selected() const { return content->presetTitles().at(content->presetIndex()).toStdString(); }
    std::pair<int, int> size() const { return {model->settings()->width(), model->settings()->height()}; }
    void setSize(int width, int height) {
        Settings settings = model->settings()->value();
        settings.width = width;
        settings.height = height;
        model->settings()->setValue(settings);
    }

    const std::string input = folder.file("holiday.mov");
    const std::string movie = folder.file("holiday.zeb");
    const std::string longFilm = folder.file("long.mov");
    RecordingDock dock;
    AppActionRouter requests;
    std::vector<std::pair<std::string, bool>> opened;
    int timesShown = 0;
    std::unique_ptr<ContentViewModel> content = std::make_unique<ContentViewModel>(ContentServices{
        *model, defaults, notifications, mainActor, clock, films, tasks, panels, sounds, dock, requests,
        [this](const URL& url, bool hideMaker) { opened.emplace_back(url.path(), hideMaker); },
        [this] { ++timesShown; }, "1.2", "7"});
};

TEST_F(ContentViewModelTest, PresetsAndSizeFollowEachOther) {
    postApplyPreset(notifications, 1280, 720);
    EXPECT_EQ(size().first, Settings().width) << "not on screen";
    content->appear();
    EXPECT_EQ(selected(), "Custom size");
    setSize(1280, 720);
    EXPECT_EQ(selected(), "HD");

    std::vector<std::string> shown;
    QObject::connect(content.get(), &ContentViewModel::presetsChanged, [&] { shown.push_back(selected()); });
    content->setPresetIndex(3);
    settle();
    EXPECT_EQ(size(), std::pair(1920, 1080));
    EXPECT_FALSE(shown.empty());
    EXPECT_THAT(shown, Each("Full HD")) << "no flash of the custom size between width and height";

    postApplyPreset(notifications, 720, 576);
    settle();
    EXPECT_EQ(selected(), "DVD");
    setSize(728, 576);
    EXPECT_EQ(selected(), "Custom size");
    // Presets are edited in another window.
    defaults.set("presetDVDW", 728);
    EXPECT_EQ(selected(), "DVD");
    const auto preset = [](const char* name, int width, int height) {
        return PropertyDictionary{{"name", name}, {"w", width}, {"h", height}};
    };
    shown.clear();
    defaults.set("customPresets", PropertyArray{preset("äpfel", 640, 480), preset("Zebra", 320, 240),
                                                preset("TV", 1280, 720), preset("Apfel", 64, 64)});
    EXPECT_THAT(content->presetTitles(),
                ElementsAre("Custom size", "DVD", "HD", "Full HD", "Apfel", "äpfel", "TV", "Zebra"));
    EXPECT_THAT(shown, Each("DVD"));
    EXPECT_FALSE(shown.empty()) << "other titles";
    setSize(640, 480);
    EXPECT_EQ(selected(), "äpfel");
    EXPECT_EQ(shown.back(), "äpfel");
    // Built-in presets match first. A user preset of the same size can be chosen until it is deleted.
    content->setPresetIndex(6);
    EXPECT_EQ(selected(), "TV");
    settle();
    defaults.set("customPresets", PropertyArray{});
    EXPECT_EQ(selected(), "HD");
    content->setPresetIndex(0);
    EXPECT_EQ(size().first, 1280) << "custom is no size of its own";
    EXPECT_EQ(selected(), "Custom size");
    for (const int none : {-1, 4})
        content->setPresetIndex(none);
    EXPECT_EQ(selected(), "Custom size");
    setSize(1920, 1080);
    EXPECT_EQ(selected(), "Full HD") << "at once";

    // The model may be destroyed before the work that a selection has posted.
    content->setPresetIndex(2);
    content.reset();
    settle();
    postApplyPreset(notifications, 1, 1);
    defaults.set("presetDVDW", 1);
    EXPECT_EQ(size(), std::pair(1280, 720));
}

TEST_F(ContentViewModelTest, CarriesOutRequestsFromOutside) {
    test::store(movie, "movie");
    requests.post(EncodeAction{URL::forFile(input)});
    EXPECT_FALSE(model->inputURL());
    content->appear();
    EXPECT_EQ(model->inputPath().toStdString(), input);

    requests.post(PlayAction{URL::forFile(folder.file("./holiday.zeb")), true});
    EXPECT_THAT(opened, ElementsAre(std::pair(movie, true)));
    EXPECT_THAT(sounds.played, ElementsAre(SoundEffect::nowEstablishingDatalink));

    for (const std::string& missing :
         {"file://" + folder.file("missing.zeb"), "http://127.0.0.1" + movie, std::string("holiday.zeb")}) {
        model->setLastError({});
        requests.post(PlayAction{*URL::parse(missing), true});
        EXPECT_THAT(model->lastError().value_or(""), HasSubstr(".zeb")) << missing;
        EXPECT_THAT(model->logLines().back(), HasSubstr(model->lastError().value_or("?")));
    }
    EXPECT_EQ(timesShown, 3) << "what is said must be seen";
    EXPECT_EQ(opened.size(), 1U);

    // A new window carries out the latest request again, but stays visible.
    requests.post(PlayAction{URL::forFile(movie), true});
    content->appear();
    content->appear();
    EXPECT_THAT(std::vector(opened.end() - 3, opened.end()),
                ElementsAre(std::pair(movie, true), std::pair(movie, false), std::pair(movie, false)));
}

TEST_F(ContentViewModelTest, OpensDroppedFilesByKind) {
    content->appear();
    test::store(movie, "movie");

    const auto local = [](const std::string& path) {
        return QUrl::fromLocalFile(QString::fromStdString(path));
    };
    content->takeDroppedURLs(
        {local(input), local(movie), local(longFilm), QUrl("https://example.org/a.mp4")});
    EXPECT_EQ(model->inputPath().toStdString(), longFilm);
    EXPECT_THAT(opened, ElementsAre(std::pair(movie, false)));
    EXPECT_THAT(model->statusText().toStdString(), HasSubstr("long.mov")) << "which of the two it is";
    EXPECT_THAT(model->logText().toStdString(), HasSubstr(model->statusText().toStdString()));
    EXPECT_THAT(model->lastError().value_or(""), HasSubstr("https://example.org/a.mp4"));

    settle();
    model->cancel();
    content->takeDroppedURLs({QUrl("file://otherhost" + QString::fromStdString(movie)),
                              QUrl("file://otherhost" + QString::fromStdString(input))});
    EXPECT_THAT(model->lastError().value_or(""), HasSubstr("file://otherhost" + input));
    EXPECT_EQ(model->inputPath().toStdString(), longFilm);
    EXPECT_EQ(opened.size(), 1U);
    content->takeDroppedURLs({local(input)});
    EXPECT_EQ(model->statusText().toStdString(), localizedText("status_cancelled")) << "there was no choice";
    EXPECT_FALSE(model->lastError());

    settle();
    run = [&](const ConversionCallbacks& callbacks, const std::string&) {
        callbacks.progress("Second 1", 0.5);
        mainActor.run();
        content->takeDroppedURLs({local(input), local(longFilm)});
        EXPECT_EQ(model->statusText(), "Second 1") << "the status is the run's";
        EXPECT_THAT(model->logText().toStdString(), testing::EndsWith("others were ignored."));
    };
    startAndSettle();
}

TEST_F(ContentViewModelTest, ShowsTimesAndSizeDuringRun) {
    takeFilm(input);
    std::vector<std::string> shown;
    run = [&](const ConversionCallbacks& callbacks, const std::string& output) {
        const auto advance = [&](double fraction) {
            callbacks.progress("…", fraction);
            mainActor.run();
            shown.push_back(content->timesText().toStdString());
        };
        advance(0);
        test::store(output, std::string(3'449'000, 'x'));
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
    std::string told;
    QObject::connect(content.get(), &ContentViewModel::timesTextChanged,
                     [&] { told = content->timesText().toStdString(); });
    startAndSettle();
    EXPECT_THAT(shown, ElementsAre("Remaining: —   Elapsed: 0:00   Size: —",
                                   "Remaining: —   Elapsed: 0:03   Size: 3.4 MB",
                                   "Remaining: 1:00   Elapsed: 0:13   Size: 3.4 MB"));
    EXPECT_EQ(content->timesText(), "Remaining: —   Elapsed: —   Size: 3.4 MB") << "the size stays";
    EXPECT_EQ(told, content->timesText().toStdString());
    EXPECT_THAT(dock.shown, ElementsAre(0, 0.125, 0.25, 1, -1));
    mainActor.pass(seconds(5));
    EXPECT_EQ(content->elapsedText(), "—");
}

TEST_F(ContentViewModelTest, UnansweredQuestionKeepsMovie) {
    takeFilm(input);
    int questions = 0;
    QObject::connect(content.get(), &ContentViewModel::cancelledOutputQuestionChanged, [&] { ++questions; });
    run = [this](const ConversionCallbacks&, const std::string& output) {
        test::store(output, std::string(100, 'x'));
        model->cancel();
        throw ZEBConverterError::cancelled();
    };
    startAndSettle();
    EXPECT_THAT(content->cancelledOutputQuestion().toStdString(), HasSubstr("holiday.zeb"));
    EXPECT_EQ(questions, 1);
    content->dismissCancelledOutputQuestion();
    content->dismissCancelledOutputQuestion();
    EXPECT_EQ(content->cancelledOutputQuestion(), "");
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(test::contents(movie).size(), 100U);
}

TEST_F(ContentViewModelTest, NamesFileBeingConverted) {
    takeFilm(input);
    EXPECT_EQ(content->runSourceText(), "");
    std::vector<std::string> named;
    QObject::connect(content.get(), &ContentViewModel::runSourceTextChanged,
                     [&] { named.push_back(content->runSourceText().toStdString()); });
    content->start();
    model->setInput(URL::forFile("/films/long.mov"));
    EXPECT_EQ(content->runSourceText(), "Converting “holiday.mov”") << "whatever is chosen meanwhile";
    settle();
    EXPECT_THAT(named, ElementsAre("Converting “holiday.mov”", ""));
}

TEST_F(ContentViewModelTest, AsksBeforeReplacingFile) {
    takeFilm(input);
    test::store(movie, "precious");
    content->start();
    EXPECT_THAT(content->replaceQuestion().toStdString(), HasSubstr("holiday.zeb"));
    content->dismissReplaceQuestion();
    EXPECT_EQ(content->replaceQuestion(), "");
    EXPECT_FALSE(model->isRunning());
    content->start();
    content->replaceAndStart();
    EXPECT_EQ(content->replaceQuestion(), "");
    EXPECT_TRUE(model->isRunning());
    settle();

    content->start();
    EXPECT_NE(content->replaceQuestion(), "") << "the permission ended with the run";
    EXPECT_FALSE(model->isRunning());
    content->dismissReplaceQuestion();
    films.add(folder.file("holiday.avi"), {});
    model->chooseOutput();
    panels.answer(movie);
    content->start();
    EXPECT_EQ(content->replaceQuestion(), "") << "the panel has asked";
    EXPECT_TRUE(model->isRunning());
    settle();
    model->chooseOutput();
    panels.answer(movie);
    takeFilm(folder.file("holiday.avi"));
    content->start();
    EXPECT_NE(content->replaceQuestion(), "") << "but not that of another video";
    model->setInput(URL::forFile(input));
    EXPECT_EQ(content->replaceQuestion(), "") << "a question goes with its video";
    EXPECT_FALSE(model->isRunning());
}

TEST_F(ContentViewModelTest, StartWaitsForForecastBeforeAsking) {
    model->settings()->setQlModeNumber(4);
    const std::string song = folder.file("song.mp3");
    fake::FakeFilm unseen;
    unseen.videoTracks.clear();
    films.add(song, unseen);
    const struct {
        std::string before, film;
        bool isAnalysed, asks, starts;
    } cases[] = {
        {input, longFilm, false, true, false}, {input, longFilm, true, true, false},
        {longFilm, input, false, false, true}, {longFilm, input, true, false, true},
        {longFilm, song, false, false, false}, {longFilm, "/films/missing.mov", false, false, false},
    };
    for (const auto& [before, film, isAnalysed, asks, starts] : cases) {
        SCOPED_TRACE(film);
        takeFilm(before);
        model->setInput(URL::forFile(film));
        if (isAnalysed) settle();
        content->start();
        content->start();
        settle();
        EXPECT_FALSE(model->isRunning());
        EXPECT_EQ(content->misfitQuestion(), "");
        runs.clear();
        passPatience();
        EXPECT_EQ(content->misfitQuestion() != "", asks);
        EXPECT_EQ(runs.size(), starts ? 1U : 0U);
        EXPECT_FALSE(model->isWaiting());
        content->dismissMisfitQuestion();
    }

    // A forecast that arrives before the analysis does not start the run.
    model->setInput(URL::forFile(longFilm));
    content->start();
    mainActor.pass(seconds(1));
    ASSERT_EQ(tasks.waiting(), 2U);
    tasks.runNewest();
    mainActor.run();
    EXPECT_TRUE(model->isWaiting());
    model->cancel();

    // Without a video track there is nothing to wait for: the run reports the error.
    takeFilm(song);
    content->start();
    EXPECT_TRUE(model->isRunning());
    settle();
    model->setInput(URL::forFile(input));
    content->start();
    content.reset();
    settle();
    EXPECT_FALSE(model->isRunning());
}

TEST_F(ContentViewModelTest, ShowsForecastAndAsksIfTooLarge) {
    const auto forecast = [this](const std::string& path) {
        takeFilm(path);
        return content->forecastText().toStdString();
    };
    model->settings()->setQlModeNumber(4);
    EXPECT_EQ(content->forecastText(), "");
    EXPECT_THAT(forecast(input), StartsWith("Size of the movie: "));
    EXPECT_FALSE(content->forecastIsWarning());
    EXPECT_THAT(forecast(longFilm), testing::AllOf(StartsWith("Too large: "), HasSubstr("It fits ")));
    EXPECT_TRUE(content->forecastIsWarning());

    // A movie that will not fit starts after a question only. A change that makes it fit closes the question.
    content->start();
    EXPECT_EQ(content->misfitQuestion(), content->forecastText());
    content->dismissMisfitQuestion();
    EXPECT_EQ(content->misfitQuestion(), "");
    EXPECT_FALSE(model->isRunning());
    content->start();
    forecast(input);
    EXPECT_EQ(content->misfitQuestion(), "");
    forecast(longFilm);
    content->start();
    content->startAnyway();
    EXPECT_EQ(content->misfitQuestion(), "");
    EXPECT_TRUE(model->isRunning());
}

}  // namespace
}  // namespace zeb
