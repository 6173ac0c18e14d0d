#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
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
                    if (fraction > 0) isHeld.wait(true);
                };
                ConversionRun(*media).convert(source, movie, settings, held);
            },
            *defaults, panels, pasteboard, sounds, scope, *mainActor, *tasks, clock});
    }
    ~RealConversionTest() override {
        letGo();
        // As the application ends: tasks may still report to the main actor.
        tasks.reset();
    }

    static void runUntil(const std::function<bool()>& isDone) {
        while (!isDone())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void letGo() {
        isHeld = false;
        isHeld.notify_all();
    }
    /// Starts and stays in the first second.
    void begin() {
        model->setInput(URL::forFile(input));
        runUntil([this] { return model->sourceInfo().has_value(); });
        Settings settings = model->settings()->value();
        settings.width = 160;
        settings.height = 96;
        settings.fps = 5;
        model->settings()->setValue(settings);
        model->start();
        runUntil([this] { return model->progress() > 0; });
    }

    test::TemporaryFolder folder;
    const std::string input = folder.file("demo.mp4");
    const std::string output = folder.file("demo.zeb");
    const std::string preferences = folder.file("config/preferences.plist");
    std::atomic<bool> isHeld = true;  ///< a job, once its first second is written
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

TEST_F(RealConversionTest, StartsAgainWhileTheCancelledJobEnds) {
    begin();
    model->cancel();
    model->start();
    EXPECT_TRUE(model->isRunning());
    letGo();
    runUntil([this] { return !model->isRunning(); });
    EXPECT_EQ(model->lastError().value_or(""), "");
    EXPECT_FALSE(model->cancelledOutputPendingDeletion());
    const MovieCheck check = checkMovie([this] { return openForReading(output); }, {});
    EXPECT_FALSE(check.fault) << check.fault->text;
    EXPECT_GT(check.seconds, 1);
}

TEST_F(RealConversionTest, EndsWithItsWindow) {
    begin();
    model.reset();
}

}  // namespace
}  // namespace zeb
