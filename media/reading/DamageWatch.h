#pragma once

#include <atomic>

struct AVCodecContext;

namespace zeb::ffmpeg {

/// Takes over the libraries' messages for the whole process: to standard error or nowhere, and to those who
/// watch.
void routeMessages(bool toStandardError);

/// Sets `sawDamage` when the decoder complains of its data or patches a picture: not every decoder marks the
/// frames that it has patched, but all say so in their messages. Call before the decoder is opened.
void watchForDamage(AVCodecContext& decoder, std::atomic<bool>& sawDamage);

}  // namespace zeb::ffmpeg
