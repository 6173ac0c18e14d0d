#include "ui/AppSoundPlayer.h"

#include <string>
#include <utility>

#include "ui/SoundEffectsEnabled.h"

namespace zeb {
namespace {

/// The name of the effect's file.
std::string_view resourceName(SoundEffect effect) {
    switch (effect) {
        case SoundEffect::accessingFile:
            return "Accessing File";
        case SoundEffect::transferComplete:
            return "Transfer Complete";
        case SoundEffect::programLoadedAndReady:
            return "Program Loaded and Ready";
        case SoundEffect::programInProgress:
            return "Program in Progress";
        case SoundEffect::deactivationComplete:
            return "Deactivation Complete";
        case SoundEffect::logsAccessed:
            return "Logs Accessed";
        case SoundEffect::nowEstablishingDatalink:
            return "Now Establishing Datalink";
    }
    return {};
}

}  // namespace

AppSoundPlayer::AppSoundPlayer(const Services& services, ResourceFolders resources)
    : m_services(services), m_resources(std::move(resources)) {}

void AppSoundPlayer::play(SoundEffect effect) {
    if (!soundEffectsEnabled(m_services.defaults)) return;

    const auto sampled = soundOf(effect);
    if (!sampled) {
        m_services.beep.beep();
        return;
    }
    const auto sound = std::make_shared<SampledSoundSource>(sampled);
    m_activeSounds->push_back(sound);
    // The sound may outlive this player, so nothing of it is touched but the list, if that is still there.
    const auto remove = [list = std::weak_ptr(m_activeSounds), ended = sound.get()] {
        const auto active = list.lock();
        if (active) std::erase_if(*active, [ended](const auto& entry) { return entry.get() == ended; });
    };
    m_services.output.start(
        sound, [&mainActor = m_services.mainActor, remove](const std::string&) { mainActor.post(remove); });
}

/// Reads a file at its first use: it is small and local, which takes about a millisecond.
std::shared_ptr<const SampledSound> AppSoundPlayer::soundOf(SoundEffect effect) {
    const auto known = m_sounds.find(effect);
    if (known != m_sounds.end()) return known->second;
    const auto path = resourcePath("sounds/" + std::string(resourceName(effect)), "aiff", m_resources);
    if (!path) return nullptr;
    try {
        return m_sounds[effect] = readSampledSound(m_services.media, *path);
    } catch (const MediaError&) {
        return nullptr;
    }
}

}  // namespace zeb
