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

/// The effects from sound files among the resources, "sounds/NAME.aiff". A file that is missing or cannot be
/// read is replaced by the error tone. Used on the main thread.
class AppSoundPlayer final : public SoundEffects {
public:
    /// All of it outlives the player.
    struct Services {
        const UserDefaults& defaults;
        const MediaLibrary& media;
        AudioOutput& output;
        MainActor& mainActor;
    };
    using ActiveSounds = std::vector<std::shared_ptr<AudioSource>>;

    explicit AppSoundPlayer(const Services& services, ResourceFolders resources = standardResourceFolders());

    void play(SoundEffect effect) override;

    /// The sounds that play now, in the order of their starts.
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
