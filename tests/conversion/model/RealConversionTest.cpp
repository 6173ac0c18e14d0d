#include <QCoreApplication>
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "conversion/run/ConversionRun.h"
#include "format/check/MovieCheck.h"
#include "media/Media.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/files/FileHandle.h"
#include "platform/tasks/ThreadTasks.h"
#include "tests/conversion/model/ConverterTest.h"

namespace zeb {
namespace {

/// The model with real threads, the real media library and a real video.
class RealConversionTest : public test::ConverterTest {
protected:
    RealConversionTest() {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QCoreApplication application(argc, argv);
        std::filesystem::copy_file(ZEB_DEMO_CLIP, input);
        loop = std::make_unique<QtMainActor>();
        threads = std::make_unique<ThreadTasks>();
        model = std::make_unique<ConverterViewModel>(ConverterServices{
            *media,
            [this](const std::string& source, OutputPlace& movie, const Settings& settings,
                   const ConversionCallbacks& callbacks) {
                ConversionCallbacks held = callbacks;
                held.progress = [this, &callbacks](const std::string& text, double fraction) {
                    callbacks.progress(text, fraction);
                    if (fraction > 0) isHeld.wait(true);
                };
                ConversionRun(*media).convert(source, movie, settings, held);
            },
            defaults, panels, [](const std::string&) {}, sounds, scope, *loop, *threads, clock});
    }
    ~RealConversionTest() override {
        letGo();
        // Same order as in the application: tasks may still report to the main actor.
        threads.reset();
        model.reset();
    }

    static void runUntil(const std::function<bool()>& isDone) {
        while (!isDone())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void letGo() {
        isHeld = false;
        isHeld.notify_all();
    }
    /// Starts a conversion and holds it after its first second.
    void begin() {
        model->setInput(URL::forFile(input));
        runUntil([this] { return model->sourceInfo().has_value(); });
        model->settings()->setValue({"demo", 160, 96, true, 5});
        model->start();
        runUntil([this] { return model->progress() > 0 && model->progress() < 1; });
    }

    const std::string input = folder.file("demo.mp4");
    const std::string output = folder.file("demo.zeb");
    std::atomic<bool> isHeld = true;  ///< holds a job once its first second is written
    std::unique_ptr<MediaLibrary> media = makeFFmpegMediaLibrary(MediaLogging::silent);
    std::unique_ptr<QtMainActor> loop;
    std::unique_ptr<ThreadTasks> threads;
};

TEST_F(RealConversionTest, RunsEndWhenCancelledOrDestroyed) {
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

    // The model is destroyed during a run.
    isHeld = true;
    begin();
    model.reset();
}

}  // namespace
}  // namespace zeb
