#include "player/ZEBPlayerModel.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "format/ZEBFormatError.h"
#include "platform/fake/HandDrivenClock.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "platform/fake/HandDrivenTasks.h"
#include "tests/player/RecordingOutput.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

/// A movie whose frame k is k + 1 pixels wide.
struct Script {
    ZEBHeader header;
    std::set<std::int64_t> undecodable;
    std::set<std::int64_t> broken;  ///< frames that cannot be read
    std::function<void(std::int64_t)> beforeFrame = [](std::int64_t) {};
    Soundtrack soundtrack;
    bool headerIsBroken = false;
    bool soundIsBroken = false;
    Mode32Interpretation interpretation = Mode32Interpretation::rgb565LE;
};

class ScriptedReader final : public MovieReader {
public:
    explicit ScriptedReader(std::shared_ptr<Script> script) : m_script(std::move(script)) {}

    const ZEBHeader& readHeader() override {
        if (m_script->headerIsBroken) throw std::runtime_error("Kein ZEB1-File");
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
        image.height = 1;
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

    /// Plays on a thread of its own while this one is the main thread, until the model stops playing.
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

TEST_F(ZEBPlayerModelTest, OpensAndSeeks) {
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
    EXPECT_EQ(status(), "Error: Kein ZEB1-File");
    script->headerIsBroken = false;
    script->undecodable = {0};
    model->open("clip.zeb");
    EXPECT_FALSE(model->image());
    EXPECT_EQ(status(), description + " • (no frame can be decoded)");
}

TEST_F(ZEBPlayerModelTest, PlaysEveryFrameAtItsMoment) {
    std::vector<std::pair<int, std::int64_t>> shown;
    const auto start = clock.now();
    QObject::connect(model.get(), &ZEBPlayerModel::displayedFrameIndexChanged, [&] {
        shown.emplace_back(static_cast<int>((clock.now() - start) / milliseconds(1)),
                           model->displayedFrameIndex());
    });
    script->header.fps = 30;
    model->open("clip.zeb");
    // One frame takes long: the next ones come at once until the schedule has been caught up with.
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

TEST_F(ZEBPlayerModelTest, LoopsUntilItIsToldNotToAndEndsWithAnError) {
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

TEST_F(ZEBPlayerModelTest, ControlsDuringPlaybackKeepReaderAndPictureTogether) {
    model->open("clip.zeb");
    int sleeps = 0;
    playToTheEnd([&] {
        if (++sleeps == 50) model->pause();
    });
    EXPECT_EQ(model->displayedFrameIndex(), 2);
    EXPECT_EQ(shownFrame(), 2);

    // Paused while a frame is being read: it is shown, and the next playback goes on behind it.
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

    // A seek, and another movie, in the middle of playing.
    model->seek(1);
    player.join();
    mainActor.run();
    EXPECT_EQ(shownFrame(), 1);
    model->play();
    model->open("other.zeb");
    settle();
    EXPECT_EQ(shownFrame(), 0);
    EXPECT_FALSE(model->isPlaying());

    // The window closes while it plays.
    model->play();
    model.reset();
    settle();
}

TEST_F(ZEBPlayerModelTest, SoundFollowsThePicture) {
    script->soundtrack = {std::vector<std::uint8_t>(20000, 128), 20000, 1};
    // It joins a playback that began before it was ready, at the pace of the pictures: 33 ms for 1/30 s.
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

    // A sound that cannot be read, and none at all.
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

}  // namespace
}  // namespace zeb
