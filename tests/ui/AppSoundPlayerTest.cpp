#include "ui/feedback/AppSoundPlayer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "media/Media.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "tests/doubles/HandDrivenMainActor.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/player/RecordingOutput.h"
#include "ui/presets/Preset.h"

namespace zeb {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AppSoundPlayerTest : public testing::Test {
protected:
    AppSoundPlayerTest() { std::filesystem::create_directory(m_folder.file("sounds")); }

    void addSound(const std::string& name) {
        const std::string path = m_folder.file("sounds/" + name + ".aiff");
        test::store(path, "decoded by the fake");
        fake::FakeFilm film;
        film.soundTracks = {fake::soundOf({{44100, 1, {0.25F, 0.5F}}, {44100, 1, {0.75F}}})};
        m_media.add(path, film);
    }

    /// Number of times the error tone was started.
    long tones() const {
        const SampledSound tone = errorTone();
        return std::ranges::count_if(m_output.started, [&tone](const auto& started) {
            return started.source->sampleRate() == tone.sampleRate;
        });
    }

    test::TemporaryFolder m_folder;
    NotificationCenter m_notifications;
    fake::FakeUserDefaults m_defaults{m_notifications};
    fake::FakeLibrary m_media;
    test::RecordingOutput m_output;
    fake::HandDrivenMainActor m_mainActor;
    std::optional<AppSoundPlayer> m_player{
        std::in_place, AppSoundPlayer::Services{m_defaults, m_media, m_output, m_mainActor},
        std::vector<std::string>{"/nowhere", m_folder.path()}};
};

TEST_F(AppSoundPlayerTest, HoldsEachSoundUntilItFinishes) {
    addSound("Logs Accessed");
    m_player->play(SoundEffect::logsAccessed);
    m_player->play(SoundEffect::logsAccessed);
    ASSERT_THAT(m_output.started, SizeIs(2));
    const auto& [first, second] = std::pair(m_output.started[0], m_output.started[1]);
    EXPECT_THAT(m_player->activeSounds(), ElementsAre(first.source, second.source));
    EXPECT_EQ(m_media.record().soundReaders.size(), 1U) << "decoded once for both";

    // Each sound has a separate position. Its mono channel plays on both sides.
    for (const auto& started : {first, second}) {
        std::vector<float> samples(8);
        EXPECT_EQ(started.source->sampleRate(), 44100);
        EXPECT_EQ(started.source->render(samples), 3U);
        EXPECT_THAT(samples, ElementsAre(0.25F, 0.25F, 0.5F, 0.5F, 0.75F, 0.75F, 0, 0));
    }

    second.finished({});
    EXPECT_THAT(m_player->activeSounds(), SizeIs(2)) << "only the main thread changes the list";
    m_mainActor.run();
    EXPECT_THAT(m_player->activeSounds(), ElementsAre(first.source));
    // A sound may outlive the player.
    m_player.reset();
    first.finished("the device is gone");
    EXPECT_EQ(m_mainActor.run(), 1U);
    EXPECT_EQ(tones(), 0);
}

TEST_F(AppSoundPlayerTest, BeepsForMissingOrUnreadableSounds) {
    m_player->play(SoundEffect::transferComplete);
    EXPECT_EQ(tones(), 1);
    test::store(m_folder.file("sounds/Transfer Complete.aiff"), "unknown to the fake");
    m_player->play(SoundEffect::transferComplete);
    EXPECT_EQ(tones(), 2);
    EXPECT_THAT(m_output.started, SizeIs(2));
    EXPECT_THAT(m_player->activeSounds(), IsEmpty());
    addSound("Transfer Complete");  // a failure is not remembered
    m_player->play(SoundEffect::transferComplete);
    EXPECT_EQ(tones(), 2);
    EXPECT_THAT(m_output.started, SizeIs(3));

    m_defaults.set(soundEffectsEnabledKey, false);
    m_player->play(SoundEffect::transferComplete);
    m_player->play(SoundEffect::accessingFile);  // missing
    EXPECT_EQ(tones(), 2);
    EXPECT_THAT(m_output.started, SizeIs(3));
}

TEST_F(AppSoundPlayerTest, EveryEffectHasPlayableFile) {
    const auto media = makeFFmpegMediaLibrary(MediaLogging::silent);
    AppSoundPlayer player({m_defaults, *media, m_output, m_mainActor}, {ZEB_RESOURCE_FOLDER});
    for (int effect = 0; effect <= static_cast<int>(SoundEffect::nowEstablishingDatalink); ++effect)
        player.play(static_cast<SoundEffect>(effect));
    EXPECT_THAT(m_output.started, SizeIs(7));
    EXPECT_EQ(tones(), 0);
}

}  // namespace
}  // namespace zeb
