#include <gtest/gtest.h>

#include <QCoreApplication>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "conversion/ConversionRun.h"
#include "conversion/model/ConverterViewModel.h"
#include "format/MovieCheck.h"
#include "platform/FileHandle.h"
#include "platform/SystemClock.h"
#include "platform/ThreadTasks.h"
#include "platform/fake/FakePanels.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "platform/posix/PropertyListDefaults.h"
#include "platform/qt/QtMainActor.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

class SilentSounds final : public SoundEffects {
public:
    void play(SoundEffect) override {}
};

/// Holds a job after its first second until a test lets it go on.
class Gate {
public:
    void wait() {
        std::unique_lock lock(m_mutex);
        m_opened.wait(lock, [this] { return m_isOpen; });
    }
    void set(bool isOpen) {
        const std::lock_guard lock(m_mutex);
        m_isOpen = isOpen;
        m_opened.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_isOpen = true;
};

/// The model on the services of the system, with a settings file of its own and
/// a real film.
class RealConversionTest : public testing::Test {
protected:
    RealConversionTest() {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QCoreApplication application(argc, argv);
        std::filesystem::copy_file(ZEB_DEMO_CLIP, input);
        mainActor = std::make_unique<QtMainActor>();
        defaults = std::make_unique<PropertyListDefaults>(preferences, notifications, *mainActor);
        tasks = std::make_unique<ThreadTasks>();
        model = std::make_unique<ConverterViewModel>(ConverterServices{
            *media,
            [this](const std::string& source, const std::string& movie, const Settings& settings,
                   const ConversionCallbacks& callbacks) {
                ConversionCallbacks held = callbacks;
                held.progress = [this, &callbacks](const std::string& text, double fraction) {
                    callbacks.progress(text, fraction);
                    if (fraction > 0) gate.wait();
                };
                ConversionRun(*media).convert(source, movie, settings, held);
            },
            *defaults, panels, pasteboard, sounds, scope, *mainActor, *tasks, clock});
    }
    ~RealConversionTest() override {
        gate.set(true);
        // As the application ends: tasks may still report to the main actor.
        tasks.reset();
    }

    static void runUntil(const std::function<bool()>& isDone) {
        while (!isDone())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void takeFilm() {
        model->setInput(URL::forFile(input));
        runUntil([this] { return model->sourceInfo().has_value(); });
        Settings settings = model->settings()->value();
        settings.width = 160;
        settings.height = 96;
        settings.fps = 5;
        model->settings()->setValue(settings);
    }
    void expectSoundMovie() const {
        const MovieCheck check = checkMovie([this] { return openForReading(output); }, {});
        EXPECT_FALSE(check.fault) << check.fault->text;
        EXPECT_GT(check.seconds, 1);
    }

    test::TemporaryFolder folder;
    const std::string input = folder.file("demo.mp4");
    const std::string output = folder.file("demo.zeb");
    const std::string preferences = folder.file("config/preferences.plist");
    Gate gate;
    NotificationCenter notifications;
    fake::FakePanels panels;
    fake::FakePasteboard pasteboard;
    SilentSounds sounds;
    OpenSecurityScope scope;
    SystemClock clock;
    std::unique_ptr<MediaLibrary> media = makeFFmpegMediaLibrary(MediaLogging::silent);
    std::unique_ptr<QtMainActor> mainActor;
    std::unique_ptr<PropertyListDefaults> defaults;
    std::unique_ptr<ThreadTasks> tasks;
    std::unique_ptr<ConverterViewModel> model;
};

TEST_F(RealConversionTest, RunsToTheEnd) {
    takeFilm();
    EXPECT_EQ(model->settings()->title(), "demo");
    double last = 0;
    QObject::connect(model.get(), &ConverterViewModel::progressChanged, [&] {
        EXPECT_GE(model->progress(), last);
        last = model->progress();
    });
    model->start();
    runUntil([this] { return !model->isRunning(); });
    EXPECT_EQ(model->lastError().value_or(""), "");
    EXPECT_EQ(last, 1);
    ASSERT_TRUE(model->playableOutputURL());
    EXPECT_EQ(model->playableOutputURL()->path(), output);
    expectSoundMovie();

    // Another start of the program finds the folder again.
    fake::FakePasteboard other;
    const PropertyListDefaults later(preferences, notifications, *mainActor);
    EXPECT_EQ(later.text(ConverterViewModel::lastInputDirKey), folder.path());
}

TEST_F(RealConversionTest, StartsAgainWhileTheCancelledJobEnds) {
    takeFilm();
    gate.set(false);
    model->start();
    runUntil([this] { return model->progress() > 0; });
    model->cancel();
    model->start();
    EXPECT_TRUE(model->isRunning());
    gate.set(true);
    runUntil([this] { return !model->isRunning(); });
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    expectSoundMovie();
}

TEST_F(RealConversionTest, EndsWithItsWindow) {
    takeFilm();
    gate.set(false);
    model->start();
    runUntil([this] { return model->progress() > 0; });
    model.reset();
}

}  // namespace
}  // namespace zeb
