#include "player/ZEBPlayerModel.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "format/ZEBErrors.h"
#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"
#include "tests/doubles/HandDrivenClock.h"
#include "tests/doubles/HandDrivenMainActor.h"
#include "tests/doubles/HandDrivenTasks.h"
#include "tests/player/HandDrivenDevice.h"
#include "tests/player/RecordingOutput.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

/// A movie whose frame k is k + 1 pixels wide. The height is the number of the interpretation.
struct Script {
    ZEBHeader header;
    std::set<std::int64_t> undecodable;
    std::set<std::int64_t> broken;  ///< frames that cannot be read
    std::function<void(std::int64_t)> beforeFrame = [](std::int64_t) {};
    Soundtrack soundtrack;
    bool headerIsBroken = false;
    bool isMissing = false;
    bool soundIsBroken = false;
    Mode32Interpretation interpretation = Mode32Interpretation::rgb565LE;
};

class ScriptedReader final : public MovieReader {
public:
    explicit ScriptedReader(std::shared_ptr<Script> script) : m_script(std::move(script)) {}

    const ZEBHeader& readHeader() override {
        if (m_script->isMissing) throw FileError("clip.zeb", ENOENT);
        if (m_script->headerIsBroken) throw ZEBFormatError::notAMovie();
        return m_script->header;
    }
    std::optional<FrameImage> nextFrame(bool loop) override {
        const std::int64_t index = m_next;
        m_script->beforeFrame(index);
        if (m_script->broken.contains(index)) throw std::runtime_error("EOF");
        m_next = index + 1;
        if (loop && m_next == m_script->header.frameCount) m_next = 0;
        if (m_script->undecodable.contains(index)) return std::nullopt;
        FrameImage image;
        image.width = static_cast<int>(index) + 1;
        image.height = static_cast<int>(m_script->interpretation);
        return image;
    }
    void seekToFrame(std::int64_t frame) override { m_next = frame; }
    void setMode32Interpretation(Mode32Interpretation value) override { m_script->interpretation = value; }
    Soundtrack readAllAudio() override {
        if (m_script->soundIsBroken) throw std::runtime_error("Unexpected EOF");
        return m_script->soundtrack;
    }

private:
    std::shared_ptr<Script> m_script;
    std::int64_t m_next = 0;
};

class ZEBPlayerModelTest : public testing::Test {
protected:
    ZEBPlayerModelTest() {
        script->header.title = "Clip";
        script->header.width = 512;
        script->header.height = 256;
        script->header.fps = 25;
        script->header.mode = 32;
        script->header.frameCount = 10;
        model = std::make_unique<ZEBPlayerModel>(
            PlayerServices{[this](const std::string&) { return std::make_unique<ScriptedReader>(script); },
                           output, mainActor, tasks, clock});
    }

    std::string status() const { return model->statusText().toStdString(); }
    void settle() {
        tasks.runAll();
        mainActor.run();
    }
    int shownFrame() const { return model->image() ? model->image()->width - 1 : -1; }

    /// Plays on another thread, with this thread as the main thread, until the model stops.
    void playToTheEnd(const std::function<void()>& onSleep = [] {}) {
        model->play();
        std::thread player([this] { tasks.runAll(); });
        while (model->isPlaying()) {
            mainActor.run();
            if (clock.sleepers() > 0 && mainActor.waiting() == 0) {
                onSleep();
                clock.advance(milliseconds(1));
            }
            std::this_thread::yield();
        }
        player.join();
        mainActor.run();
    }

    std::shared_ptr<Script> script = std::make_shared<Script>();
    test::RecordingOutput output;
    fake::HandDrivenMainActor mainActor;
    fake::HandDrivenTasks tasks;
    fake::HandDrivenClock clock;
    std::unique_ptr<ZEBPlayerModel> model;
};

TEST_F(ZEBPlayerModelTest, OpensSeeksAndReportsErrors) {
    model->setMode32(Mode32Interpretation::qpcPackedBE);
    model->seek(3);
    EXPECT_EQ(model->displayedFrameIndex(), 0) << "without a movie nothing happens";
    const std::string description = "Clip • 512x256 • 25 fps • Mode 32";
    model->open("clip.zeb");
    EXPECT_EQ(script->interpretation, Mode32Interpretation::qpcPackedBE);
    EXPECT_EQ(status(), description);
    EXPECT_EQ(shownFrame(), 0);
    EXPECT_EQ(model->durationSeconds(), 0.4);
    for (const auto& [target, shown] : {std::pair(3, 3), {-3, 0}, {15, 9}, {8, 8}}) {
        model->seek(target);
        EXPECT_EQ(model->displayedFrameIndex(), shown);
        EXPECT_EQ(shownFrame(), shown);
        EXPECT_EQ(model->canStepForward(), shown < 9);
    }
    script->broken = {5};
    model->seek(5);
    EXPECT_EQ(status(), "Error: EOF");
    EXPECT_EQ(shownFrame(), 8) << "the picture stays";
    model->seek(6);
    EXPECT_EQ(status(), description);

    script->headerIsBroken = true;
    model->open("clip.zeb");
    EXPECT_EQ(status(), "Error: Not a ZEB1 file");
    EXPECT_FALSE(model->image());
    script->isMissing = true;
    model->open("clip.zeb");
    model->seek(0);
    model->play();
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(status(), localizedText("error_zeb_missing_format", {"clip.zeb"})) << "and it stays said";
    script->headerIsBroken = script->isMissing = false;
    script->undecodable = {0};
    model->open("clip.zeb");
    EXPECT_FALSE(model->image());
    EXPECT_EQ(status(), description + " • (no frame can be decoded)");
}

TEST_F(ZEBPlayerModelTest, InterpretationChangesPausedFrameAtOnce) {
    model->open("clip.zeb");
    const auto reading = [this] { return static_cast<Mode32Interpretation>(model->image()->height); };
    for (const std::int64_t frame : {0, 4, 9}) {
        for (const auto mode32 : {Mode32Interpretation::qpcPackedBE, Mode32Interpretation::rgb565BE}) {
            model->seek(frame);
            model->setMode32(mode32);
            EXPECT_EQ(reading(), mode32);
            EXPECT_EQ(shownFrame(), frame);
            EXPECT_EQ(model->displayedFrameIndex(), frame);
        }
    }
    model->seek(4);
    playToTheEnd([&] {
        if (shownFrame() == 6) return model->pause();
        model->setMode32(Mode32Interpretation::rgb565LE);
        EXPECT_EQ(reading(), Mode32Interpretation::rgb565BE) << "the next frame is soon there";
    });
    EXPECT_EQ(shownFrame(), 6) << "none was left out";
    EXPECT_EQ(reading(), Mode32Interpretation::rgb565LE);

    // In other modes the interpretation has no effect.
    script->header.mode = 4;
    model->open("clip.zeb");
    script->broken = {0};
    model->setMode32(Mode32Interpretation::qpcPackedLE);
    EXPECT_EQ(status(), "Clip • 512x256 • 25 fps • Mode 4");
}

TEST_F(ZEBPlayerModelTest, PlaysEveryFrameOnSchedule) {
    std::vector<std::pair<int, std::int64_t>> shown;
    const auto start = clock.now();
    QObject::connect(model.get(), &ZEBPlayerModel::displayedFrameIndexChanged, [&] {
        shown.emplace_back(static_cast<int>((clock.now() - start) / milliseconds(1)),
                           model->displayedFrameIndex());
    });
    script->header.fps = 30;
    model->open("clip.zeb");
    // After a slow frame the next ones follow at once until they are on schedule again.
    script->beforeFrame = [this](std::int64_t index) {
        if (index == 5) clock.advance(milliseconds(70));
    };
    playToTheEnd();
    using Shown = std::pair<int, std::int64_t>;
    EXPECT_THAT(shown, ElementsAre(Shown(0, 1), Shown(33, 2), Shown(66, 3), Shown(99, 4), Shown(202, 5),
                                   Shown(202, 6), Shown(202, 7), Shown(231, 8), Shown(264, 9)));
    EXPECT_EQ(shownFrame(), 9);

    model->play();
    EXPECT_TRUE(model->isPlaying());
    settle();
    EXPECT_FALSE(model->isPlaying()) << "at the end there is nothing more to play";
}

TEST_F(ZEBPlayerModelTest, LoopsUntilSwitchedOffOrError) {
    std::vector<std::int64_t> shown;
    QObject::connect(model.get(), &ZEBPlayerModel::displayedFrameIndexChanged, [&] {
        shown.push_back(model->displayedFrameIndex());
        if (shown.size() == 12) model->setLooping(false);
    });
    script->header.frameCount = 5;
    script->undecodable = {2};
    model->open("clip.zeb");
    model->setLooping(true);
    playToTheEnd();
    EXPECT_THAT(shown, ElementsAre(1, 2, 3, 4, 0, 1, 2, 3, 4, 0, 1, 2, 3, 4));

    script->broken = {3};
    model->seek(0);
    playToTheEnd();
    EXPECT_EQ(status(), "Error: EOF");
    EXPECT_EQ(model->displayedFrameIndex(), 2);
}

TEST_F(ZEBPlayerModelTest, ControlsDuringPlaybackKeepFrameConsistent) {
    model->open("clip.zeb");
    int sleeps = 0;
    playToTheEnd([&] {
        if (++sleeps == 50) model->pause();
    });
    EXPECT_EQ(model->displayedFrameIndex(), 2);
    EXPECT_EQ(shownFrame(), 2);

    // Paused while a frame is being read: the frame is shown, and playback continues after it.
    script->beforeFrame = [this](std::int64_t index) {
        if (index == 4) mainActor.post([this] { model->pause(); });
    };
    playToTheEnd();
    const std::int64_t paused = model->displayedFrameIndex();
    EXPECT_EQ(shownFrame(), paused);
    script->beforeFrame = [](std::int64_t) {};
    model->play();
    std::thread player([this] { tasks.runAll(); });
    while (model->displayedFrameIndex() == paused)
        mainActor.run();
    EXPECT_EQ(model->displayedFrameIndex(), paused + 1);
    EXPECT_EQ(shownFrame(), paused + 1);

    // A seek and another movie during playback.
    model->seek(1);
    player.join();
    mainActor.run();
    EXPECT_EQ(shownFrame(), 1);
    model->play();
    model->open("other.zeb");
    settle();
    EXPECT_EQ(shownFrame(), 0);
    EXPECT_FALSE(model->isPlaying());

    // The model is destroyed during playback.
    model->play();
    model.reset();
    settle();
}

TEST_F(ZEBPlayerModelTest, SoundStartsAndStopsWithPictures) {
    script->soundtrack = {std::vector<std::uint8_t>(20000, 128), 20000, 1};
    // The sound joins playback that started before it was loaded. Its rate matches frames of 33 ms instead of
    // 1/30 s.
    script->header.fps = 30;
    model->open("clip.zeb");
    model->play();
    EXPECT_TRUE(output.started.empty());
    tasks.runNext();
    mainActor.run();
    ASSERT_EQ(output.started.size(), 1U);
    EXPECT_EQ(output.started[0].source->sampleRate(), 20202);
    model->pause();
    EXPECT_TRUE(output.started[0].isStopped);
    settle();
    model->play();
    ASSERT_EQ(output.started.size(), 2U);
    model->unload();
    EXPECT_TRUE(output.started[1].isStopped);
    settle();

    // An unreadable sound and no sound.
    for (const bool isBroken : {true, false}) {
        script->soundIsBroken = isBroken;
        script->soundtrack.bytes.clear();
        model->open("clip.zeb");
        settle();
        model->play();
        model->pause();
    }
    EXPECT_EQ(output.started.size(), 2U);
}

/// The frame whose sound is playing, or -1 for silence. Each frame's sound has a different level.
int frameHeard(const test::HandDrivenDevice& device) {
    const std::size_t middle = device.heard.size() / 2;
    return static_cast<int>(std::lround(device.heard[middle] * 128 / 10)) - 1;
}

TEST_F(ZEBPlayerModelTest, SoundFollowsPicturesDespiteLoopSwitches) {
    constexpr int never = -1;
    constexpr int frames = 10;
    constexpr int period = 40;
    /// Times in milliseconds at which the device requests samples.
    struct Questions {
        int first, each;
        bool areExact = false;
    };
    constexpr Questions exact{0, 10, true};
    constexpr Questions early{0, 30};
    constexpr Questions late{35, 10};
    const struct {
        const char* name;
        int start;  ///< frame on screen before playback
        bool loops;
        std::vector<int> switches;  ///< times in milliseconds at which the loop is switched
        int end;                    ///< time at which the pictures end
        Questions device;
        int gaps = 0;  ///< number of buffers with missing sound
        int soundFrames = frames;
        int broken = never;
    } cases[] = {
        {"once", 0, false, {}, 360, exact},
        {"once from the middle", 4, false, {}, 200, exact},
        {"from the last frame there is nothing", 9, false, {}, 0, exact},
        {"the whole again, after the rest", 4, true, {650}, 1000, exact},
        {"again from the last frame", 9, true, {450}, 800, exact},
        {"off in the first pass", 4, true, {100}, 200, exact},
        {"off in the last frame", 4, true, {190}, 200, exact},
        {"off in the last frame, the sound being ahead", 4, true, {195}, 200, early},
        {"off in the first frame", 4, true, {205}, 600, exact},
        {"off in the first frame, the sound being late", 4, true, {215}, 600, late},
        {"on", 4, false, {100, 300}, 600, exact},
        {"on, the sound being ahead", 4, false, {100, 300}, 600, early},
        {"on in the last frame, the sound being ahead", 4, false, {195, 700}, 1000, early, 1},
        {"on and off there", 4, false, {195, 197}, 200, early},
        {"on and off and on there", 4, false, {195, 197, 199, 700}, 1000, early, 1},
        {"on and off and on", 4, false, {50, 100, 150, 610}, 1000, exact},
        {"sound shorter than the pictures", 0, true, {500}, 760, exact, 0, 5},
        {"sound longer than the pictures", 0, true, {500}, 760, exact, 0, 14},
        {"a frame that cannot be read", 0, false, {}, 240, exact, 0, frames, 7},
    };
    for (const auto& [name, start, loops, switches, end, questions, gaps, soundFrames, broken] : cases) {
        SCOPED_TRACE(name);
        script->soundtrack = {{}, 20000, 1};
        for (int frame = 0; frame < soundFrames; ++frame)
            script->soundtrack.bytes.insert(script->soundtrack.bytes.end(), 20000 * period / 1000,
                                            static_cast<std::uint8_t>(128 + 10 * (frame % frames + 1)));
        if (soundFrames > frames)
            std::fill(script->soundtrack.bytes.begin() + 800 * frames, script->soundtrack.bytes.end(), 255);
        script->broken.clear();
        if (broken != never) script->broken = {broken};
        test::HandDrivenDevice device(20000);
        model = std::make_unique<ZEBPlayerModel>(
            PlayerServices{[this](const std::string&) { return std::make_unique<ScriptedReader>(script); },
                           device, mainActor, tasks, clock});
        model->setLooping(loops);
        model->open("clip.zeb");
        settle();
        model->seek(start);

        const auto begin = clock.now();
        const auto time = [&] { return static_cast<int>((clock.now() - begin) / milliseconds(1)); };
        bool hasPlayed = false;
        int gapsFound = 0;
        playToTheEnd([&] {
            if (std::count(switches.begin(), switches.end(), time()) > 0)
                model->setLooping(!model->isLooping());
            if (time() < questions.first || (time() - questions.first) % questions.each != 0) return;
            device.play(milliseconds(questions.each));
            hasPlayed = true;
            const int heard = frameHeard(device);
            const auto seen = static_cast<int>(model->displayedFrameIndex());
            if (questions.areExact) {
                ASSERT_EQ(heard, seen < soundFrames ? seen : -1) << time();
            } else {
                // Early or late by less than one frame.
                ASSERT_TRUE(heard == seen || (heard + 1) % frames == seen || (seen + 1) % frames == heard)
                    << heard << " at " << seen << ", " << time();
                const bool isSilent = device.heard.back() == 0;
                if (time() + questions.each < end && isSilent) ++gapsFound;
                const bool isLast = time() - questions.first + questions.each > end;
                EXPECT_TRUE(isSilent || !isLast || time() < switches.back()) << "nothing of the next pass";
            }
        });
        EXPECT_EQ(time(), end);
        EXPECT_EQ(hasPlayed, end > 0);
        EXPECT_EQ(gapsFound, gaps);
        device.play(milliseconds(10));
        device.play(milliseconds(10));
        EXPECT_EQ(frameHeard(device), -1) << "it ends with the pictures";
        model.reset();
    }
}

}  // namespace
}  // namespace zeb
