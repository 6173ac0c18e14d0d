#include <gtest/gtest.h>

#include "platform/fake/FakeUserDefaults.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "ui/AppSoundPlayer.h"

namespace zeb {
namespace {

class SilentOutput final : public AudioOutput {
public:
    void start(std::shared_ptr<AudioSource>, Finished) override { ++count; }
    void stop(const AudioSource&) override {}
    int count = 0;
};

class ForbiddenBeep final : public SystemBeep {
public:
    void beep() override { ADD_FAILURE() << "a sound is missing"; }
};

/// The files as they come with the application, through the real media layer.
TEST(SoundFilesTest, EveryEffectHasAFileThatCanBePlayed) {
    const auto media = makeFFmpegMediaLibrary(MediaLogging::silent);
    NotificationCenter notifications;
    const fake::FakeUserDefaults defaults{notifications};
    SilentOutput output;
    ForbiddenBeep beep;
    fake::HandDrivenMainActor mainActor;
    AppSoundPlayer player({defaults, *media, output, beep, mainActor}, {ZEB_RESOURCE_FOLDER});
    for (int effect = 0; effect <= static_cast<int>(SoundEffect::nowEstablishingDatalink); ++effect)
        player.play(static_cast<SoundEffect>(effect));
    EXPECT_EQ(output.count, 7);
}

}  // namespace
}  // namespace zeb
