#include "conversion/model/ConverterViewModel.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "conversion/plan/OutputName.h"
#include "format/ZEBErrors.h"
#include "platform/text/LocalizedText.h"
#include "tests/conversion/model/ConverterTest.h"
#include "tests/format/GoldenMovie.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using enum SoundEffect;

class ConverterViewModelTest : public test::ConverterTest {
protected:
    ConverterViewModelTest() {
        fake::FakeFilm film;
        film.videoTracks = {{{1920, 1080}, {}, 25}};
        film.soundTrackFacts = {{48000, 2, 0x61616320}, {44100, {}, 1}};
        films.add("/films/holiday.mov", film);
        film.videoTracks = {{{1280, 720}, {}, 29.97F}};
        film.soundTrackFacts.clear();
        films.add("/films/silent.mov", film);
        film.videoTracks.clear();
        films.add("/films/song.mp3", film);
    }

    void chooseOutput(const std::optional<std::string>& path) {
        model->chooseOutput();
        panels.answer(path);
    }
    /// Sets an input video and an output path.
    void prepare() {
        takeFilm("/films/holiday.mov");
        chooseOutput(output);
        sounds.played.clear();
    }
    std::string log() const { return model->logText().toStdString(); }
    std::string status() const { return model->statusText().toStdString(); }

    const std::string output = folder.file("film.zeb");
};

TEST(OutputNameTest, IsSafeOnEverySystem) {
    const std::pair<const char*, const char*> cases[] = {
        {" \u2003Grüße\u00a0\n", "Grüße.zeb"},
        {"\\/:?%*|\"<>", "__________.zeb"},
        {" \t", "holiday.zeb"},
        {"Untitled ", "holiday.zeb"},
    };
    for (const auto& [title, name] : cases)
        EXPECT_EQ(proposedOutputName(title, "/films/holiday.mov"), name);
}

TEST_F(ConverterViewModelTest, AnalysisProposesUneditedSettings) {
    model->setInput(URL::forFile("/films/./x/../holiday.mov"));
    EXPECT_EQ(model->inputPath(), "/films/holiday.mov");
    EXPECT_EQ(model->outputPath(), "/films/holiday.zeb");
    EXPECT_EQ(defaults.text("ZEBMaker.lastInputDir"), "/films");
    EXPECT_FALSE(model->sourceInfo()) << "the window does not wait for the analysis";
    settle();
    EXPECT_EQ(model->sourceInfo(), (SourceInfo{1920, 1080, 25}));
    EXPECT_THAT(model->audioTrackLabels(),
                ElementsAre("Track 1 · Stereo · 48.0 kHz · aac ", "Track 2 · 44.1 kHz · 0x00000001"));
    Settings expected{.title = "holiday", .width = 1920, .height = 1080, .fps = 25};
    EXPECT_EQ(model->settings()->value(), expected);
    EXPECT_EQ(log(), localizedText("log_input_format", {"/films/holiday.mov"}) + '\n' +
                         localizedText("log_source_format", {1920, 1080, 25}) + '\n' +
                         localizedText("log_audio_tracks_format", {2}));
    model->showNotice("a notice");
    EXPECT_TRUE(log().ends_with("\na notice"));
    EXPECT_EQ(status(), "a notice");

    // Another source: proposed values follow it, edited values stay, sound is switched off if there is none.
    model->settings()->setTitle("My film");
    model->settings()->setAudioTrackIndex(1);
    takeFilm("/films/silent.mov");
    EXPECT_TRUE(log().ends_with(localizedText("log_source_format", {1280, 720, 30}))) << "no tracks, no line";
    EXPECT_EQ(model->outputPath(), "/films/silent.zeb");
    expected = {.title = "My film",
                .width = 1280,
                .height = 720,
                .fps = 30,
                .includeAudio = false,
                .audioChannels = 0};
    EXPECT_EQ(model->settings()->value(), expected);

    model->settings()->setWidth(640);
    model->settings()->setFpsFromSource(false);
    takeFilm("/films/holiday.mov");
    expected.fpsFromSource = false;
    expected.includeAudio = true;
    expected.audioChannels = 2;
    expected.width = 640;  // width and height are proposed together or not at all
    EXPECT_EQ(model->settings()->value(), expected);
}

TEST_F(ConverterViewModelTest, FailedAnalysisShowsErrorKeepsSource) {
    takeFilm("/films/holiday.mov");
    takeFilm("/films/missing.mov");
    EXPECT_THAT(*model->lastError(), HasSubstr("No such film."));
    EXPECT_THAT(log(), HasSubstr("No such film."));
    EXPECT_TRUE(model->sourceInfo()) << "what was known stays";

    takeFilm("/films/song.mp3");
    EXPECT_FALSE(model->sourceInfo());
    EXPECT_TRUE(model->availableAudioTracks().empty());
    EXPECT_FALSE(model->lastError());
}

TEST_F(ConverterViewModelTest, LatestInputWins) {
    const std::string sounding = "/films/holiday.mov", silent = "/films/silent.mov",
                      missing = "/films/missing.mov";
    const auto finishInOrder = [&](const std::string& first, const std::string& second) {
        model->setInput(URL::forFile(first));
        tasks.runNext();  // its result is posted but not delivered
        model->setInput(URL::forFile(second));
    };
    const auto finishBackwards = [&](const std::string& first, const std::string& second) {
        model->setInput(URL::forFile(first));
        model->setInput(URL::forFile(second));
        tasks.runNewest();
        mainActor.run();
        films.record().opened.clear();
        tasks.runAll();
        EXPECT_THAT(films.record().opened, testing::IsEmpty()) << "the older analysis is cancelled";
    };
    const std::function<void(const std::string&, const std::string&)> orders[] = {finishInOrder,
                                                                                  finishBackwards};
    for (const auto& order : orders) {
        for (const auto& [first, second] :
             {std::pair(sounding, silent), std::pair(missing, silent), std::pair(sounding, missing)}) {
            SCOPED_TRACE(first + " then " + second);
            model = makeModel();
            order(first, second);
            settle();
            const bool isUsable = second == silent;
            EXPECT_EQ(model->inputPath().toStdString(), second);
            EXPECT_EQ(model->sourceInfo(),
                      isUsable ? std::optional(SourceInfo{1280, 720, 30}) : std::nullopt);
            EXPECT_EQ(model->settings()->width(), isUsable ? 1280 : Settings().width);
            EXPECT_EQ(model->settings()->includeAudio(), !isUsable);
            EXPECT_EQ(model->lastError().has_value(), !isUsable);
            EXPECT_EQ(log().find("No such film.") != std::string::npos, !isUsable);
        }
    }
}

TEST_F(ConverterViewModelTest, DestroyedModelGetsNoResult) {
    model->setInput(URL::forFile("/films/holiday.mov"));
    tasks.runAll();
    model->chooseInput();
    EXPECT_EQ(panels.openPanel().folder, "/films");
    model.reset();
    mainActor.run();
    panels.answer("/films/silent.mov");
}

TEST_F(ConverterViewModelTest, RestoresSoundThatAnalysisSwitchedOff) {
    const std::map<std::string, std::function<void()>> steps = {
        {"silent", [this] { takeFilm("/films/silent.mov"); }},
        {"sound", [this] { takeFilm("/films/holiday.mov"); }},
        {"missing", [this] { takeFilm("/films/missing.mov"); }},
        {"on", [this] { model->settings()->setIncludeAudio(true); }},
        {"off", [this] { model->settings()->setIncludeAudio(false); }},
        {"none", [this] { model->settings()->setAudioChannels(0); }},
        {"mono", [this] { model->settings()->setAudioChannels(1); }},
    };
    const struct {
        std::string steps;
        bool includeAudio;
        int channels;
    } cases[] = {
        {"silent", false, 0},
        {"silent sound", true, 2},
        {"silent silent missing sound", true, 2},
        {"mono silent sound", true, 1},
        {"silent mono sound", true, 1},
        {"silent sound silent sound", true, 2},
        // Sound switched off by the user stays off.
        {"off silent sound", false, 2},
        {"silent sound off silent sound", false, 2},
        {"silent on off sound", false, 2},
        {"silent on silent sound", true, 2},
        {"off sound", false, 2},
        // Sound switched on by the user.
        {"silent on", true, 2},
        {"none off on", true, 2},
        {"mono off on", true, 1},
    };
    for (const auto& [names, includeAudio, channels] : cases) {
        model = makeModel();
        std::istringstream words(names);
        for (std::string step; words >> step;)
            steps.at(step)();
        EXPECT_EQ(model->settings()->includeAudio(), includeAudio) << names;
        EXPECT_EQ(model->settings()->audioChannels(), channels) << names;
    }
}

TEST_F(ConverterViewModelTest, VideoRateReplacesTypedRate) {
    const auto typeRate = [this] {
        model->settings()->setFpsFromSource(false);
        model->settings()->setFps(5);
    };
    takeFilm("/films/holiday.mov");
    typeRate();
    EXPECT_EQ(model->settings()->fps(), 5);
    model->settings()->setFpsFromSource(true);
    EXPECT_EQ(model->settings()->fps(), 25);
    takeFilm("/films/silent.mov");
    EXPECT_EQ(model->settings()->fps(), 30) << "and follows the next video";

    model = makeModel();
    typeRate();
    model->settings()->setFpsFromSource(true);
    takeFilm("/films/holiday.mov");
    EXPECT_EQ(model->settings()->fps(), 25) << "also where no video was there";
}

TEST_F(ConverterViewModelTest, StartWaitsForAnalysis) {
    enum Event { nothing, cancel, anotherVideo, sameVideo };
    const struct {
        std::string film;
        Event event;
        unsigned runs;
        std::string error, statusKey;
    } cases[] = {
        {"/films/silent.mov", nothing, 1, "", "status_finished"},
        {"/films/missing.mov", nothing, 0, "No such film.", "status_error"},
        {"/films/song.mp3", nothing, 0, localizedText("error_no_video_track"), "status_error"},
        {"/films/silent.mov", cancel, 0, "", "status_cancelled"},
        {"/films/silent.mov", anotherVideo, 0, "", "status_ready"},
        {"/films/silent.mov", sameVideo, 0, "", "status_ready"},
    };
    for (const auto& [film, event, count, error, statusKey] : cases) {
        SCOPED_TRACE(film + ' ' + std::to_string(event));
        model = makeModel();
        runs.clear();
        prepare();
        model->setInput(URL::forFile(film));
        bool couldStart = true;  // value at the latest notification
        QObject::connect(model.get(), &ConverterViewModel::canStartChanged,
                         [&] { couldStart = model->canStart(); });
        model->start();
        EXPECT_FALSE(couldStart);
        EXPECT_TRUE(model->isWaiting());
        EXPECT_FALSE(model->canStart());
        EXPECT_FALSE(model->isRunning());
        EXPECT_EQ(status(), localizedText("status_waiting"));
        model->start();
        if (event == cancel) model->cancel();
        if (event == anotherVideo) model->setInput(URL::forFile("/films/holiday.mov"));
        if (event == sameVideo) model->setInput(URL::forFile(film));
        settle();
        EXPECT_FALSE(model->isWaiting());
        EXPECT_EQ(runs.size(), count);
        for (const Settings& settings : runs)
            EXPECT_EQ(settings.width, 1280) << "the fresh numbers";
        EXPECT_THAT(model->lastError().value_or(""), HasSubstr(error));
        EXPECT_EQ(model->lastError().has_value(), !error.empty());
        EXPECT_EQ(status(), localizedText(statusKey));
        EXPECT_TRUE(model->canStart());
        EXPECT_TRUE(couldStart);
    }
}

TEST_F(ConverterViewModelTest, VideoChangedDuringSavePanelNeverStarts) {
    films.add(folder.file("nowhere/film.mov"), {});
    for (const bool isSame : {true, false}) {
        model = makeModel();
        runs.clear();
        takeFilm(folder.file("nowhere/film.mov"));
        model->start();
        model->setInput(URL::forFile(isSame ? folder.file("nowhere/film.mov") : "/films/silent.mov"));
        panels.answer(output);
        EXPECT_FALSE(model->isRunning());
        EXPECT_EQ(model->isWaiting(), isSame);
        settle();
        EXPECT_EQ(runs.size(), isSame ? 1U : 0U);
        EXPECT_EQ(model->outputPath().toStdString(), output);
    }
}

TEST_F(ConverterViewModelTest, EachVideoGetsSeparateOutputName) {
    const auto proposed = [this](const std::string& name) {
        takeFilm(folder.file(name));
        return fs::path(model->outputPath().toStdString()).filename().string();
    };
    for (const char* name : {"a.mkv", "a.mp4", "b.mkv"})
        films.add(folder.file(name), {});
    test::store(folder.file("a.zeb"), "an older movie");
    EXPECT_EQ(proposed("a.mkv"), "a.zeb") << "the question before a run protects it";
    EXPECT_EQ(proposed("b.mkv"), "b.zeb");
    EXPECT_EQ(proposed("a.mp4"), "a 2.zeb");
    run = [](const ConversionCallbacks&, const std::string& path) { test::store(path, "movie"); };
    startAndSettle();
    EXPECT_EQ(proposed("./a.mp4"), "a 2.zeb") << "the same video keeps it";
    EXPECT_EQ(proposed("a.mkv"), "a 3.zeb");
    run = [&](const ConversionCallbacks&, const std::string&) {
        if (runs.size() > 2) return;
        EXPECT_EQ(proposed("a.mp4"), "a 4.zeb") << "a run has yet to create its file";
        model->cancel();
        model->start();
        EXPECT_EQ(proposed("a.mkv"), "a 5.zeb") << "and so has the one that begins when it has ended";
    };
    startAndSettle();

    chooseOutput(output);
    EXPECT_EQ(proposed("b.mkv"), "film.zeb") << "the person has chosen it";
}

TEST_F(ConverterViewModelTest, RejectsInputsOfOtherComputers) {
    prepare();
    startAndSettle();
    const Settings settings = model->settings()->value();
    for (const std::string text :
         {"http://example.org/films/silent.mov", "file://otherhost/films/silent.mov", "silent.mov"}) {
        SCOPED_TRACE(text);
        model->setLastError({});
        model->setInput(*URL::parse(text));
        EXPECT_EQ(model->lastError(), localizedText("error_not_local_format", {text}));
        EXPECT_THAT(model->logLines().back(), HasSubstr(text));
        EXPECT_EQ(tasks.waiting(), 0U);
        EXPECT_EQ(model->inputPath(), "/films/holiday.mov");
        EXPECT_EQ(model->outputPath().toStdString(), output);
        EXPECT_TRUE(model->playableOutputURL());
        EXPECT_EQ(model->settings()->value(), settings);
        EXPECT_EQ(defaults.text("ZEBMaker.lastInputDir"), "/films");
    }
    model->setInput(*URL::parse("file://localhost/films/silent.mov"));
    EXPECT_EQ(model->inputPath(), "/films/silent.mov");
    EXPECT_FALSE(model->lastError());
    settle();
}

TEST_F(ConverterViewModelTest, CompleteRunShowsStatesInOrder) {
    prepare();
    std::vector<std::string> changes;
    const auto watch = [&](auto signal, const std::function<std::string()>& shown) {
        QObject::connect(model.get(), signal, [&changes, shown] { changes.push_back(shown()); });
    };
    watch(&ConverterViewModel::isRunningChanged, [&] {
        EXPECT_THAT(scope.calls, Each(StartsWith("+"))) << "access lasts until the end is handled";
        return model->isRunning() ? "running" : "idle";
    });
    watch(&ConverterViewModel::statusTextChanged, [&] { return status(); });
    watch(&ConverterViewModel::progressChanged, [&] { return std::to_string(model->progress()); });
    watch(&ConverterViewModel::playableOutputURLChanged,
          [&] { return model->playableOutputURL() ? model->playableOutputURL()->path() : "none"; });
    run = [](const ConversionCallbacks& callbacks, const std::string&) {
        callbacks.progress("one", 0.25);
        callbacks.progress("two", 0.5);
    };
    model->start();
    model->settings()->setTitle("Another title");
    startAndSettle();
    EXPECT_THAT(changes, ElementsAre("running", localizedText("status_starting"), "0.500000", "two",
                                     "1.000000", localizedText("status_finished"), output, "idle"));
    ASSERT_EQ(runs.size(), 1U) << "a second start while running does nothing";
    EXPECT_EQ(runs[0].title, "holiday") << "settings are copied at the start";
    EXPECT_THAT(log(), HasSubstr("one\ntwo\n" + localizedText("log_finished")));
    EXPECT_THAT(sounds.played, ElementsAre(programInProgress, transferComplete));
    EXPECT_THAT(scope.calls, ElementsAre("+/films/holiday.mov", "+" + output, "-" + output));

    model->copyLog();
    EXPECT_EQ(clipboard, log());
    model->setInput(URL::forFile("/films/silent.mov"));
    EXPECT_FALSE(model->playableOutputURL());
}

TEST_F(ConverterViewModelTest, FailedRunShowsItsError) {
    prepare();
    run = [](const ConversionCallbacks&, const std::string& path) {
        test::store(path, "movie");
        throw ZEBConverterError::noVideoTrack();
    };
    startAndSettle();
    EXPECT_EQ(model->lastError(), "There is no video track.");
    EXPECT_EQ(status(), localizedText("status_error"));
    EXPECT_THAT(log(), HasSubstr("There is no video track."));
    EXPECT_FALSE(model->isRunning());
    EXPECT_FALSE(model->cancelledOutputPendingDeletion()) << "not even a second is there";

    run = [](const ConversionCallbacks&, const std::string&) { throw std::bad_alloc(); };
    model->start();
    EXPECT_FALSE(model->lastError());
    settle();
    EXPECT_EQ(model->lastError(), "Not enough memory");
}

TEST_F(ConverterViewModelTest, BundlesReportsIntoOneMessage) {
    prepare();
    int progressChanges = 0;
    QObject::connect(model.get(), &ConverterViewModel::progressChanged, [&] { ++progressChanges; });
    run = [this](const ConversionCallbacks& callbacks, const std::string&) {
        for (int line = 1; line <= 10000; ++line) {
            callbacks.progress("warning " + std::to_string(line), line / 10000.0);
            if (line != 4000) continue;
            EXPECT_EQ(mainActor.waiting(), 1U);
            mainActor.run();
            EXPECT_THAT(log(), HasSubstr("\nwarning 1\nwarning 2\n"));
            EXPECT_EQ(model->logLines().back(), "warning 4000");
        }
        EXPECT_EQ(mainActor.waiting(), 1U);
    };
    startAndSettle();
    EXPECT_EQ(progressChanges, 2) << "the last one is 1 in both ways";
    ASSERT_EQ(model->logLines().size(), 5000U);
    EXPECT_EQ(model->logLines().front(), "warning 5002");
}

TEST_F(ConverterViewModelTest, CancelledOutputIsKeptOrDeleted) {
    prepare();
    std::string written;
    run = [&](const ConversionCallbacks& callbacks, const std::string& path) {
        test::store(path, written);
        EXPECT_FALSE(callbacks.isCancelled());
        model->cancel();
        EXPECT_FALSE(model->isRunning()) << "at once";
        EXPECT_TRUE(callbacks.isCancelled());
        callbacks.progress("late", 0.75);
        throw ZEBConverterError::cancelled();
    };
    startAndSettle();
    EXPECT_FALSE(model->cancelledOutputPendingDeletion()) << "nothing had been written";

    written = "movie";
    startAndSettle();
    EXPECT_EQ(status(), localizedText("status_cancelled"));
    EXPECT_THAT(log(), HasSubstr("late")) << "no line is lost";
    EXPECT_FALSE(model->lastError());
    // A folder has taken the place of the output.
    fs::remove(output);
    fs::create_directory(output);
    model->deleteCancelledOutput();
    EXPECT_THAT(*model->lastError(), HasSubstr(output));
    EXPECT_TRUE(fs::exists(output));
}

/// All combinations: ended by cancelling or by an error, with or without an older movie, with or without a
/// complete second.
TEST_F(ConverterViewModelTest, UnfinishedMovieKeepsOrRestoresPrevious) {
    namespace golden = test::golden;
    prepare();
    const std::string previous = folder.file("film.previous.zeb");
    const golden::Bytes movie = golden::unfinishedMovie();
    const golden::Bytes header(movie.begin(), movie.begin() + 44);
    for (const bool isCancelled : {true, false}) {
        for (const bool hasOld : {true, false}) {
            for (const bool hasSecond : {true, false}) {
                SCOPED_TRACE(testing::Message() << isCancelled << hasOld << hasSecond);
                fs::remove(output);
                if (hasOld) test::store(output, "old");
                run = [&](const ConversionCallbacks&, const std::string& path) {
                    EXPECT_EQ(fs::exists(previous), hasOld);
                    test::store(path, hasSecond ? movie : header);
                    if (isCancelled) throw ZEBConverterError::cancelled();
                    throw FileError(path, ENOSPC);
                };
                startAndSettle();
                const bool asks = hasSecond || (isCancelled && !hasOld);
                ASSERT_EQ(model->cancelledOutputPendingDeletion().has_value(), asks);
                EXPECT_EQ(model->lastError().has_value(), !isCancelled);
                if (!asks) {
                    EXPECT_EQ(test::contents(output), hasOld ? "old" : "");
                    EXPECT_FALSE(fs::exists(previous));
                    continue;
                }
                EXPECT_EQ(model->pendingRunHasFailed(), !isCancelled);
                EXPECT_EQ(model->pendingPreviousPath(), hasOld ? previous : "");
                model->deleteCancelledOutput();
                EXPECT_FALSE(model->cancelledOutputPendingDeletion());
                EXPECT_EQ(test::contents(output), hasOld ? "old" : "");
                EXPECT_EQ(fs::exists(output), hasOld);
                if (hasOld) {
                    EXPECT_EQ(model->logLines().back(),
                              localizedText("log_previous_restored_format", {output}));
                }

                startAndSettle();
                model->keepCancelledOutput();
                EXPECT_FALSE(model->cancelledOutputPendingDeletion());
                EXPECT_TRUE(fs::exists(output));
                EXPECT_EQ(test::contents(previous), hasOld ? "old" : "");
                if (hasOld) {
                    EXPECT_EQ(model->logLines().back(),
                              localizedText("log_previous_kept_format", {previous}));
                }
                fs::remove(previous);
            }
        }
    }
}

TEST_F(ConverterViewModelTest, ReplacesOnlyFileSeenAtStart) {
    prepare();
    model->start();
    test::store(output, "theirs");  // after the start, before the job creates the file
    settle();
    EXPECT_EQ(test::contents(output), "theirs");
    EXPECT_THAT(*model->lastError(), HasSubstr("exists already"));
    startAndSettle();
    EXPECT_EQ(test::contents(output), "");
    EXPECT_EQ(model->playableOutputURL()->path(), output);
}

TEST_F(ConverterViewModelTest, RestartsWhileCancelledJobEnds) {
    prepare();
    const std::string second = folder.file("second.zeb");
    run = [&](const ConversionCallbacks& callbacks, const std::string& path) {
        test::store(path, "movie");
        if (runs.size() > 1) {
            EXPECT_FALSE(callbacks.isCancelled());
            return;
        }
        model->cancel();
        // A new output and the next start, before this job has noticed the cancellation.
        chooseOutput(second);
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
    EXPECT_EQ(status(), localizedText("status_starting"));
    ASSERT_TRUE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(model->cancelledOutputPendingDeletion()->path(), output);
    settle();
    EXPECT_EQ(runs.size(), 2U);
    EXPECT_EQ(model->playableOutputURL()->path(), second);
}

TEST_F(ConverterViewModelTest, NextRunToSamePlaceKeepsFile) {
    prepare();
    run = [&](const ConversionCallbacks&, const std::string& path) {
        test::store(path, "movie");
        if (runs.size() > 1) return;
        model->cancel();
        model->start();
        throw ZEBConverterError::cancelled();
    };
    startAndSettle();
    EXPECT_EQ(runs.size(), 2U);
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(model->playableOutputURL()->path(), output);

    // The next start closes an open question. The movie is put back if that run writes none.
    run = [&](const ConversionCallbacks&, const std::string& path) {
        if (runs.size() == 3) test::store(path, test::golden::unfinishedMovie());
        model->cancel();
        throw ZEBConverterError::cancelled();
    };
    startAndSettle();
    ASSERT_TRUE(model->cancelledOutputPendingDeletion());
    model->start();
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    settle();
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    EXPECT_EQ(test::contents<test::golden::Bytes>(output), test::golden::unfinishedMovie());
}

TEST_F(ConverterViewModelTest, UnwritableFolderAsksForAnotherPlace) {
    takeFilm(folder.file("nowhere/film.mov"));
    model->start();
    model->start();
    ASSERT_EQ(panels.count(), 1U) << "one question";
    EXPECT_EQ(panels.savePanel().proposedName, "film.zeb");
    EXPECT_EQ(panels.savePanel().folder, folder.file("nowhere"));
    panels.answer(std::nullopt);
    EXPECT_FALSE(model->isRunning());
    EXPECT_EQ(status(), localizedText("status_ready"));

    model->start();
    panels.answer(folder.file("./film.zeb"));
    EXPECT_TRUE(model->isRunning());
    EXPECT_EQ(model->outputPath().toStdString(), output);
    settle();
    EXPECT_THAT(folder.names(), ElementsAre("film.zeb")) << "the probe file is gone";

    fs::create_directory(folder.file("gone"));
    chooseOutput(folder.file("gone/film.zeb"));
    fs::remove(folder.file("gone"));
    model->start();
    EXPECT_EQ(panels.count(), 0U) << "a place that the user has picked is not tested";
    settle();
}

}  // namespace
}  // namespace zeb
