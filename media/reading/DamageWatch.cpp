#include "media/reading/DamageWatch.h"

#include <cstdarg>
#include <string_view>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

std::atomic<bool> writesMessages = false;

void onMessage(void* sender, int level, const char* format, std::va_list arguments) {
    if (writesMessages) av_log_default_callback(sender, level, format, arguments);
    // Every object of the libraries starts with a pointer to its class. Each thread of a decoder has a
    // separate context, which copies the pointer set by `watchForDamage`.
    if (sender == nullptr || *static_cast<const AVClass* const*>(sender) != avcodec_get_class()) return;
    const std::string_view text(format);
    const bool isComplaint =
        level <= AV_LOG_ERROR || text.starts_with("concealing") || text.starts_with("Frame num gap");
    auto* sawDamage = static_cast<std::atomic<bool>*>(static_cast<AVCodecContext*>(sender)->opaque);
    if (isComplaint && sawDamage != nullptr) *sawDamage = true;
}

}  // namespace

void routeMessages(bool toStandardError) {
    writesMessages = toStandardError;
    av_log_set_callback(&onMessage);
}

void watchForDamage(AVCodecContext& decoder, std::atomic<bool>& sawDamage) {
    decoder.opaque = &sawDamage;
}

}  // namespace zeb::ffmpeg
