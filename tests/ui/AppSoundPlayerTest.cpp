#include "ui/AppSoundPlayer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/fake/FakeMedia.h"
#include "platform/fake/FakeUserDefaults.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Keeps what is started until the test ends it.
class RecordingOutput final : public AudioOutput {
public:
    struct Started {
        std::shared_ptr<AudioSource> source;
        Finished finished;
    };
    void start(std::shared_ptr<AudioSource> source, Finished finished) override {
        started.push_back({std::move(source), std::move(finished)});
    }
    void stop(const AudioSource&) override {}

    std::vector<Started> started;
};

class CountingBeep final : public SystemBeep {
public:
    void beep() override { ++count; }
    int count = 0;
};

class AppSoundPlayerTest : public testing::Test {
protected:
    void addSound(const std::string& name) {
        std::filesystem::create_directories(m_folder.file("sounds"));
        const std::string path = m_folder.file("sounds/" + name + ".aiff");
        std::ofstream(path) << "decoded by the fake";
        fake::FakeFilm film;
        film.soundTracks = {fake::soundOf({{44100, 1, {0.25F, 0.5F}}, {44100, 1, {0.75F}}})};
        m_media.add(path, film);
    }

    test::TemporaryFolder m_folder;
    NotificationCenter m_notifications;
    fake::FakeUserDefaults m_defaults{m_notifications};
    fake::FakeLibrary m_media;
    RecordingOutput m_output;
    CountingBeep m_beep;
    fake::HandDrivenMainActor m_mainActor;
    AppSoundPlayer m_player{{m_defaults, m_media, m_output, m_beep, m_mainActor},
                            {"/nowhere", m_folder.path()}};
};

TEST_F(AppSoundPlayerTest, HoldsEachSoundUntilThisVeryOneHasFinished) {
    addSound("Logs Accessed");
    m_player.play(SoundEffect::logsAccessed);
    m_player.play(SoundEffect::logsAccessed);
    ASSERT_THAT(m_output.started, SizeIs(2));
    const auto& [first, second] = std::pair(m_output.started[0], m_output.started[1]);
    EXPECT_THAT(m_player.activeSounds(), ElementsAre(first.source, second.source));
    EXPECT_EQ(m_media.record().soundReaders.size(), 1U) << "decoded once for both";

    // Each has a position of its own, and its channel is heard on both sides.
    for (const auto& started : {first, second}) {
        std::vector<float> samples(8);
        EXPECT_EQ(started.source->sampleRate(), 44100);
        EXPECT_EQ(started.source->render(samples), 3U);
        EXPECT_THAT(samples, ElementsAre(0.25F, 0.25F, 0.5F, 0.5F, 0.75F, 0.75F, 0, 0));
    }

    second.finished({});
    EXPECT_THAT(m_player.activeSounds(), SizeIs(2)) << "only the main thread changes the list";
    m_mainActor.run();
    EXPECT_THAT(m_player.activeSounds(), ElementsAre(first.source));
    first.finished("the device is gone");
    m_mainActor.run();
    EXPECT_THAT(m_player.activeSounds(), IsEmpty());
    EXPECT_EQ(m_beep.count, 0);
}

TEST_F(AppSoundPlayerTest, BeepsForWhatIsMissingOrCannotBeRead) {
    m_player.play(SoundEffect::transferComplete);
    EXPECT_EQ(m_beep.count, 1);
    std::filesystem::create_directories(m_folder.file("sounds"));
    std::ofstream(m_folder.file("sounds/Transfer Complete.aiff")) << "unknown to the fake";
    m_player.play(SoundEffect::transferComplete);
    EXPECT_EQ(m_beep.count, 2);
    EXPECT_THAT(m_output.started, IsEmpty());
    EXPECT_THAT(m_player.activeSounds(), IsEmpty());
    addSound("Transfer Complete");  // a failure is not remembered
    m_player.play(SoundEffect::transferComplete);
    EXPECT_EQ(m_beep.count, 2);
    EXPECT_THAT(m_output.started, SizeIs(1));
}

TEST_F(AppSoundPlayerTest, TheUserMaySwitchThemOff) {
    addSound("Accessing File");
    const std::pair<PropertyValue, std::size_t> cases[] = {{false, 0U}, {0, 0U}, {true, 1U}, {"YES", 2U}};
    for (const auto& [value, count] : cases) {
        m_defaults.set(soundEffectsEnabledKey, value);
        m_player.play(SoundEffect::accessingFile);
        EXPECT_THAT(m_output.started, SizeIs(count));
    }
    m_defaults.set(soundEffectsEnabledKey, false);
    m_player.play(SoundEffect::transferComplete);  // missing
    EXPECT_EQ(m_beep.count, 0);
}

}  // namespace
}  // namespace zeb
