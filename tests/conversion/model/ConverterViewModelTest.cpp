#include "conversion/model/ConverterViewModel.h"

#include <gmock/gmock.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
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

namespace zeb {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class RecordingSounds final : public SoundEffects {
public:
    void play(SoundEffect effect) override { played.push_back(effect); }
    std::vector<SoundEffect> played;
};

class RecordingScope final : public SecurityScope {
public:
    bool startAccessing(const std::string& path) override {
        calls.push_back("+" + path);
        return path.ends_with(".zeb");
    }
    void stopAccessing(const std::string& path) override { calls.push_back("-" + path); }
    std::vector<std::string> calls;
};

/// A conversion that a test writes down.
struct ScriptedRun {
    std::function<void(const ConversionCallbacks&, const std::string& output)> script =
        [](const ConversionCallbacks&, const std::string&) {};
    std::vector<Settings> settings;
};

class ConverterViewModelTest : public testing::Test {
protected:
    ConverterViewModelTest() {
        fake::FakeFilm film;
        film.videoTracks = {{{1920, 1080}, {}, 25}};
        film.soundTrackFacts = {{48000, 2, {}}, {44100, 1, {}}};
        films.add("/films/holiday.mov", film);
        film.videoTracks = {{{1280, 720}, {}, 29.97F}};
        film.soundTrackFacts.clear();
        films.add("/films/silent.mov", film);
        film.videoTracks.clear();
        films.add("/films/song.mp3", film);
        makeModel();
    }

    void makeModel() {
        model = std::make_unique<ConverterViewModel>(
            ConverterServices{films,
                              [this](const std::string&, const std::string& output, const Settings& settings,
                                     const ConversionCallbacks& callbacks) {
                                  run.settings.push_back(settings);
                                  run.script(callbacks, output);
                              },
                              defaults, panels, pasteboard, sounds, scope, mainActor, tasks, clock});
    }

    std::string place(const std::string& name) const { return m_folder.file(name); }
    static URL url(const std::string& path) { return URL::forFile(path); }

    void settle() {
        do {
            tasks.runAll();
        } while (mainActor.run() > 0 || tasks.waiting() > 0);
    }

    /// A model with a video and a place for the movie.
    std::string prepare(const std::string& name = "film.zeb") {
        model->setInput(url("/films/holiday.mov"));
        settle();
        model->chooseOutput();
        panels.answer(place(name));
        sounds.played.clear();
        return place(name);
    }

    std::string log() const { return model->logText().toStdString(); }
    static void write(const std::string& path) { std::ofstream(path) << "movie"; }

    test::TemporaryFolder m_folder;
    fake::FakeLibrary films;
    ScriptedRun run;
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    fake::FakePanels panels;
    fake::FakePasteboard pasteboard;
    RecordingSounds sounds;
    RecordingScope scope;
    fake::HandDrivenMainActor mainActor;
    fake::HandDrivenTasks tasks;
    fake::HandDrivenClock clock;
    std::unique_ptr<ConverterViewModel> model;
};

TEST_F(ConverterViewModelTest, AnalysisProposesWhatTheUserHasNotSet) {
    model->setInput(url("/films/./x/../holiday.mov"));
    EXPECT_EQ(model->inputPath(), "/films/holiday.mov");
    EXPECT_EQ(model->outputPath(), "/films/holiday.zeb");
    EXPECT_EQ(defaults.text("ZEBMaker.lastInputDir"), "/films");
    EXPECT_EQ(model->settings()->title(), "holiday");
    EXPECT_FALSE(model->sourceInfo()) << "the window does not wait for the analysis";
    settle();
    EXPECT_EQ(model->sourceInfo(), (SourceInfo{1920, 1080, 25}));
    EXPECT_THAT(model->audioTrackLabels(),
                ElementsAre("Spur 1 · Stereo · 48.0 kHz", "Spur 2 · Mono · 44.1 kHz"));
    EXPECT_EQ(model->settings()->width(), 1920);
    EXPECT_EQ(model->settings()->height(), 1080);
    EXPECT_EQ(model->settings()->fps(), 25);

    // Another source: what was proposed follows, what was edited stays, sound that is not there goes.
    model->settings()->setTitle("My film");
    model->settings()->setAudioTrackIndex(1);
    model->setInput(url("/films/silent.mov"));
    settle();
    EXPECT_EQ(model->outputPath(), "/films/holiday.zeb");
    Settings expected;
    expected.title = "My film";
    expected.width = 1280;
    expected.height = 720;
    expected.fps = 30;
    expected.includeAudio = false;
    expected.audioChannels = 0;
    EXPECT_EQ(model->settings()->value(), expected);

    model->settings()->setWidth(640);
    model->settings()->setFpsFromSource(false);
    model->setInput(url("/films/holiday.mov"));
    settle();
    EXPECT_EQ(model->settings()->width(), 640);
    EXPECT_EQ(model->settings()->height(), 720) << "both sides are proposed together or not at all";
    EXPECT_EQ(model->settings()->fps(), 30);
    EXPECT_FALSE(model->settings()->includeAudio());
}

TEST_F(ConverterViewModelTest, AnalysisThatFails) {
    model->setInput(url("/films/holiday.mov"));
    settle();
    model->setInput(url("/films/missing.mov"));
    settle();
    EXPECT_THAT(*model->lastError(), HasSubstr("No such film."));
    EXPECT_THAT(log(), HasSubstr("No such film."));
    EXPECT_TRUE(model->sourceInfo()) << "what was known stays";

    model->setInput(*URL::parse("https://example.org/film.mp4"));
    settle();
    EXPECT_TRUE(model->lastError()) << "nothing is fetched";
    EXPECT_EQ(defaults.text("ZEBMaker.lastInputDir"), "/films");

    const std::size_t lines = model->logLines().size();
    model->setInput(url("/films/song.mp3"));
    settle();
    EXPECT_FALSE(model->sourceInfo());
    EXPECT_TRUE(model->availableAudioTracks().empty());
    EXPECT_FALSE(model->lastError());
    EXPECT_EQ(model->logLines().size(), lines + 1) << "nothing but the input";
}

TEST_F(ConverterViewModelTest, LaterAnalysisWinsAndAModelThatIsGoneGetsNothing) {
    model->setInput(url("/films/holiday.mov"));
    model->setInput(url("/films/silent.mov"));
    settle();
    EXPECT_EQ(model->sourceInfo()->width, 1280);

    model->setInput(url("/films/holiday.mov"));
    tasks.runAll();
    model.reset();
    mainActor.run();
}

TEST_F(ConverterViewModelTest, Panels) {
    model->chooseOutput();
    EXPECT_EQ(panels.count(), 0U) << "without an input there is nothing to save";

    defaults.set("ZEBMaker.lastInputDir", "/last");
    model->chooseInput();
    EXPECT_EQ(panels.openPanel().title, localizedText("panel_open_title"));
    EXPECT_EQ(panels.openPanel().folder, "/last");
    EXPECT_EQ(panels.openPanel().contentTypes.size(), 10U);
    panels.answer("/films/holiday.mov");
    EXPECT_EQ(model->inputPath(), "/films/holiday.mov");

    model->settings()->setTitle("a/b");
    const auto chooseOutput = [this](const std::optional<std::string>& path) {
        model->chooseOutput();
        panels.answer(path);
    };
    model->chooseOutput();
    EXPECT_EQ(panels.savePanel().proposedName, "a_b.zeb");
    EXPECT_EQ(panels.savePanel().folder, "/films");
    EXPECT_THAT(panels.savePanel().contentTypes,
                ElementsAre(ContentType{ContentType::filenameExtension, "zeb"}));
    panels.answer("/movies/a.zeb");
    EXPECT_EQ(model->outputPath(), "/movies/a.zeb");
    EXPECT_EQ(defaults.text("ZEBMaker.lastOutputDir"), "/movies");
    chooseOutput("/movies/a.zeb");
    chooseOutput(std::nullopt);
    EXPECT_EQ(model->outputPath(), "/movies/a.zeb");
    using enum SoundEffect;
    EXPECT_THAT(sounds.played, ElementsAre(accessingFile, accessingFile, programLoadedAndReady, accessingFile,
                                           accessingFile));

    // Panels that are answered after the window has gone.
    model->chooseInput();
    model.reset();
    panels.answer("/films/silent.mov");
}

TEST_F(ConverterViewModelTest, RunsToTheEnd) {
    const std::string output = prepare();
    std::vector<std::string> changes;
    // Every published field notifies: collected by their names, each with what it holds by then.
    const auto record = [&](const char* name, auto value) {
        changes.push_back(std::string(name) + "=" + value());
    };
    QObject::connect(model.get(), &ConverterViewModel::isRunningChanged,
                     [&] { record("running", [&] { return std::to_string(model->isRunning()); }); });
    QObject::connect(model.get(), &ConverterViewModel::canStartChanged,
                     [&] { record("canStart", [&] { return std::to_string(model->canStart()); }); });
    QObject::connect(model.get(), &ConverterViewModel::statusTextChanged,
                     [&] { record("status", [&] { return model->statusText().toStdString(); }); });
    QObject::connect(model.get(), &ConverterViewModel::progressChanged, [&] {
        record("progress", [&] { return QString::number(model->progress()).toStdString(); });
    });
    QObject::connect(model.get(), &ConverterViewModel::playableOutputURLChanged, [&] {
        record("playable",
               [&] { return model->playableOutputURL() ? model->playableOutputURL()->path() : ""; });
    });

    run.script = [](const ConversionCallbacks& callbacks, const std::string&) {
        callbacks.progress("one", 0.25);
        callbacks.progress("two", 0.5);
    };
    model->start();
    model->settings()->setTitle("Another title");
    model->start();
    settle();
    EXPECT_THAT(changes, ElementsAre("running=1", "canStart=0", "status=" + localizedText("status_starting"),
                                     "progress=0.5", "status=two", "progress=1",
                                     "status=" + localizedText("status_finished"), "playable=" + output,
                                     "running=0", "canStart=1"));
    ASSERT_EQ(run.settings.size(), 1U) << "a second start while running does nothing";
    EXPECT_EQ(run.settings[0].title, "holiday") << "settings are copied at the start";
    EXPECT_THAT(log(), HasSubstr("one\ntwo\n" + localizedText("log_finished")));
    using enum SoundEffect;
    EXPECT_THAT(sounds.played, ElementsAre(programInProgress, transferComplete));
    EXPECT_THAT(scope.calls, ElementsAre("+/films/holiday.mov", "+" + output, "-" + output));

    model->copyLog();
    EXPECT_EQ(pasteboard.text(), log());
    EXPECT_EQ(sounds.played.back(), logsAccessed);

    model->setInput(url("/films/silent.mov"));
    EXPECT_FALSE(model->playableOutputURL());
}

TEST_F(ConverterViewModelTest, RunThatFails) {
    prepare();
    run.script = [](const ConversionCallbacks&, const std::string& output) {
        write(output);
        throw ZEBConverterError::noVideoTrack();
    };
    model->start();
    settle();
    EXPECT_EQ(model->lastError(), "Kein Video-Track gefunden.");
    EXPECT_EQ(model->statusText().toStdString(), localizedText("status_error"));
    EXPECT_THAT(log(), HasSubstr("Kein Video-Track gefunden."));
    EXPECT_FALSE(model->isRunning());
    EXPECT_FALSE(model->cancelledOutputPendingDeletion()) << "only a cancelled run's file is asked about";
    EXPECT_THAT(sounds.played, ElementsAre(SoundEffect::programInProgress));

    run.script = [](const ConversionCallbacks&, const std::string&) { throw std::bad_alloc(); };
    model->start();
    EXPECT_FALSE(model->lastError());
    settle();
    EXPECT_EQ(model->lastError(), "Not enough memory");
}

TEST_F(ConverterViewModelTest, ReportsComeBundled) {
    prepare();
    int progressChanges = 0;
    QObject::connect(model.get(), &ConverterViewModel::progressChanged, [&] { ++progressChanges; });
    run.script = [this](const ConversionCallbacks& callbacks, const std::string&) {
        for (int line = 1; line <= 4000; ++line)
            callbacks.progress("warning " + std::to_string(line), line / 10000.0);
        EXPECT_EQ(mainActor.waiting(), 1U);
        mainActor.run();
        EXPECT_EQ(model->logLines().back(), "warning 4000");
        EXPECT_THAT(log(), HasSubstr("\nwarning 1\nwarning 2\n"));
        for (int line = 4001; line <= 10000; ++line)
            callbacks.progress("warning " + std::to_string(line), line / 10000.0);
        EXPECT_EQ(mainActor.waiting(), 1U);
    };
    model->start();
    settle();
    EXPECT_EQ(progressChanges, 2) << "the last one is 1 in both ways";
    ASSERT_EQ(model->logLines().size(), 5000U);
    EXPECT_EQ(model->logLines().front(), "warning 5002");
}

TEST_F(ConverterViewModelTest, CancelKeepOrDelete) {
    const std::string output = prepare();
    run.script = [this](const ConversionCallbacks& callbacks, const std::string& path) {
        write(path);
        EXPECT_FALSE(callbacks.isCancelled());
        model->cancel();
        EXPECT_FALSE(model->isRunning()) << "at once";
        EXPECT_EQ(model->statusText().toStdString(), localizedText("status_cancelled"));
        EXPECT_TRUE(callbacks.isCancelled());
        callbacks.progress("late", 0.75);
        throw ZEBConverterError::cancelled();
    };
    const auto cancelOnce = [&] {
        model->start();
        settle();
    };
    cancelOnce();
    EXPECT_EQ(model->statusText().toStdString(), localizedText("status_cancelled"));
    EXPECT_THAT(log(), HasSubstr("late")) << "no line is lost";
    EXPECT_FALSE(model->lastError());
    ASSERT_TRUE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(model->cancelledOutputPendingDeletion()->path(), output);
    model->keepCancelledOutput();
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    EXPECT_TRUE(std::filesystem::exists(output));

    cancelOnce();
    model->deleteCancelledOutput();
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_EQ(model->logLines().back(), localizedText("log_cancelled_output_deleted_format", {output}));

    // A file that cannot be removed: by now something else stands there.
    cancelOnce();
    std::filesystem::remove(output);
    std::filesystem::create_directory(output);
    model->deleteCancelledOutput();
    EXPECT_THAT(*model->lastError(), HasSubstr(output));
    EXPECT_TRUE(std::filesystem::exists(output));
    using enum SoundEffect;
    EXPECT_THAT(sounds.played, ElementsAre(programInProgress, deactivationComplete, programInProgress,
                                           deactivationComplete, programInProgress, deactivationComplete));
}

TEST_F(ConverterViewModelTest, StartAgainWhileTheCancelledJobStillEnds) {
    const std::string first = prepare("first.zeb");
    int runs = 0;
    run.script = [&](const ConversionCallbacks& callbacks, const std::string& path) {
        write(path);
        if (++runs > 1) {
            EXPECT_FALSE(callbacks.isCancelled());
            return callbacks.progress("second run", 0.5);
        }
        model->cancel();
        // Another place, and the next start, before this job has noticed.
        model->chooseOutput();
        panels.answer(place("second.zeb"));
        model->start();
        EXPECT_TRUE(model->isRunning());
        EXPECT_EQ(tasks.waiting(), 0U) << "one job at a time";
        callbacks.progress("late", 0.9);
        mainActor.run();
        EXPECT_EQ(model->progress(), 0.0) << "the state belongs to the second run";
        throw ZEBConverterError::cancelled();
    };
    model->start();
    tasks.runNext();
    mainActor.run();
    EXPECT_TRUE(model->isRunning());
    EXPECT_EQ(model->statusText().toStdString(), localizedText("status_starting"));
    ASSERT_TRUE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(model->cancelledOutputPendingDeletion()->path(), first);
    settle();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(model->playableOutputURL()->path(), place("second.zeb"));
}

TEST_F(ConverterViewModelTest, TheNextRunToTheSamePlaceKeepsItsFile) {
    const std::string output = prepare();
    int runs = 0;
    run.script = [&](const ConversionCallbacks&, const std::string& path) {
        write(path);
        if (++runs > 1) return;
        model->cancel();
        model->start();
        throw ZEBConverterError::cancelled();
    };
    model->start();
    settle();
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(model->playableOutputURL()->path(), output);

    // The same when the question is still open as the next run starts; and a run that never began ends
    // quietly.
    runs = 0;
    run.script = [&](const ConversionCallbacks&, const std::string& path) {
        ++runs;
        write(path);
        model->cancel();
        throw ZEBConverterError::cancelled();
    };
    model->start();
    settle();
    ASSERT_TRUE(model->cancelledOutputPendingDeletion());
    run.script = [&](const ConversionCallbacks&, const std::string&) {
        ++runs;
        EXPECT_FALSE(model->cancelledOutputPendingDeletion());
        model->cancel();
        model->start();
        model->cancel();
        throw ZEBConverterError::cancelled();
    };
    model->start();
    settle();
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(model->isRunning());
    EXPECT_TRUE(model->cancelledOutputPendingDeletion()) << "nobody writes there now";
}

TEST_F(ConverterViewModelTest, UnwritableFolderAsksForAnotherPlace) {
    model->setInput(url(place("nowhere/film.mov")));
    settle();
    sounds.played.clear();
    model->start();
    model->start();
    ASSERT_EQ(panels.count(), 1U) << "one question";
    EXPECT_EQ(panels.savePanel().proposedName, "film.zeb");
    EXPECT_EQ(panels.savePanel().folder, place("nowhere"));
    panels.answer(std::nullopt);
    EXPECT_FALSE(model->isRunning());
    EXPECT_EQ(model->statusText().toStdString(), localizedText("status_ready"));
    EXPECT_EQ(model->logLines().back(), localizedText("log_cancel_requested"));

    model->start();
    panels.answer(place("./film.zeb"));
    EXPECT_TRUE(model->isRunning());
    EXPECT_EQ(model->outputPath().toStdString(), place("film.zeb"));
    settle();
    using enum SoundEffect;
    EXPECT_THAT(sounds.played,
                ElementsAre(accessingFile, accessingFile, programInProgress, transferComplete));
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path())) << "the probe file is gone";

    std::filesystem::create_directory(place("gone"));
    model->chooseOutput();
    panels.answer(place("gone/film.zeb"));
    std::filesystem::remove(place("gone"));
    model->start();
    EXPECT_EQ(panels.count(), 0U) << "a place that the user has picked is not tested";
    settle();
}

}  // namespace
}  // namespace zeb
