#include "ui/feedback/AppSoundPlayer.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "ui/presets/Preset.h"

namespace zeb {
namespace {

/// Returns the file name of the effect.
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

/// Reads the first sound track of the file at `path`. Mono is played on both channels; of more than two
/// channels the first two are used. Throws `MediaError` if there is no track, or if it is empty, too long or
/// not decodable.
std::shared_ptr<const SampledSound> readSampledSound(const MediaLibrary& media, const std::string& path) {
    constexpr std::size_t longestSound = 30;  // seconds
    const IsCancelled never = [] { return false; };
    const auto asset = media.open(path, never);
    if (asset->soundTracks().empty()) throw MediaError(MediaError::cannotDecode, {"error_media_no_sound"});
    const auto reader = asset->makeSoundReader(0, never);
    if (!reader->startReading())
        throw MediaError(MediaError::cannotDecode, {"error_media_sound_undecodable"});

    SampledSound sound;
    while (const auto buffer = reader->copyNextSampleBuffer()) {
        const auto channels = static_cast<std::size_t>(buffer->channelsPerFrame);
        sound.sampleRate = static_cast<int>(std::lround(buffer->sampleRate));
        for (std::size_t at = 0; at + channels <= buffer->samples.size(); at += channels) {
            sound.samples.push_back(buffer->samples[at]);
            sound.samples.push_back(buffer->samples[at + std::min<std::size_t>(channels - 1, 1)]);
        }
        if (sound.samples.size() / 2 / longestSound > static_cast<std::size_t>(sound.sampleRate))
            throw MediaError(MediaError::cannotDecode, {"error_media_long_sound"});
    }
    if (sound.samples.empty()) throw MediaError(MediaError::cannotDecode, {"error_media_empty_sound"});
    return std::make_shared<const SampledSound>(std::move(sound));
}

}  // namespace

AppSoundPlayer::AppSoundPlayer(const Services& services, ResourceFolders resources)
    : m_services(services), m_resources(std::move(resources)) {}

void AppSoundPlayer::play(SoundEffect effect) {
    if (!soundEffectsEnabled(m_services.defaults)) return;

    const auto sampled = soundOf(effect);
    if (!sampled) {
        m_services.output.start(std::make_shared<SampledSoundSource>(m_errorTone), {});
        return;
    }
    const auto sound = std::make_shared<SampledSoundSource>(sampled);
    m_activeSounds->push_back(sound);
    // The sound may outlive this player, so the callback only uses the list, if that still exists.
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
