#pragma once

#include <map>
#include <memory>
#include <vector>

#include "conversion/model/SoundEffects.h"
#include "media/Media.h"
#include "platform/files/StandardFolders.h"
#include "platform/settings/UserDefaults.h"
#include "platform/sound/AudioOutput.h"
#include "platform/sound/SampledSound.h"
#include "platform/tasks/MainActor.h"

namespace zeb {

/// Plays the effects from the sound resources "sounds/NAME.aiff". The error tone replaces a file that is
/// missing or unreadable. Main thread.
class AppSoundPlayer final : public SoundEffects {
public:
    /// All of them outlive the player.
    struct Services {
        const UserDefaults& defaults;
        const MediaLibrary& media;
        AudioOutput& output;
        MainActor& mainActor;
    };
    using ActiveSounds = std::vector<std::shared_ptr<AudioSource>>;

    explicit AppSoundPlayer(const Services& services, ResourceFolders resources = standardResourceFolders());

    void play(SoundEffect effect) override;

    /// The sounds playing now, in order of their start.
    const ActiveSounds& activeSounds() const { return *m_activeSounds; }

private:
    std::shared_ptr<const SampledSound> soundOf(SoundEffect effect);

    Services m_services;
    ResourceFolders m_resources;
    std::shared_ptr<const SampledSound> m_errorTone = std::make_shared<const SampledSound>(errorTone());
    std::map<SoundEffect, std::shared_ptr<const SampledSound>> m_sounds;  ///< those read so far
    std::shared_ptr<ActiveSounds> m_activeSounds = std::make_shared<ActiveSounds>();
};

}  // namespace zeb
