#include "ui/model/TargetDescription.h"

#include <algorithm>
#include <cstdint>

#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"
#include "platform/text/UTF8.h"

namespace zeb {
namespace {

std::string audioText(const Settings& settings) {
    if (!settings.includeAudio || settings.audioChannels == 0) return localizedText("target_audio_off");
    if (settings.audioChannels == 1) return localizedText("target_audio_mono");
    return localizedText("target_audio_stereo");
}

}  // namespace

TargetDescription targetDescription(const SourceInfo& source, const Settings& settings) {
    // Uses the same function as the run.
    return {targetSize(source.width, source.height, settings),
            settings.fps < 1 ? 1 : std::min(settings.fps, std::max(source.fps, 1)), settings.qlModeNumber,
            audioText(settings)};
}

std::string sourceTargetText(const SourceInfo& source, const Settings& settings) {
    const TargetDescription target = targetDescription(source, settings);
    return localizedText("source_target_format",
                         {std::int64_t{source.width}, std::int64_t{source.height}, std::int64_t{source.fps},
                          std::int64_t{target.size.width}, std::int64_t{target.size.height},
                          std::int64_t{target.fps}, std::int64_t{target.qlModeNumber}, target.audioText});
}

std::string versionText(const std::string& version, const std::string& build) {
    const std::string number = trimmed(version).empty() ? unknownText : version;
    return "v" + number + (trimmed(build).empty() ? "" : " (" + build + ")");
}

}  // namespace zeb
