#pragma once

#include <atomic>

struct AVCodecContext;

namespace zeb::ffmpeg {

/// Handles the libraries' log messages for the whole process: prints them to standard error or drops them,
/// and passes them to the damage watches.
void routeMessages(bool toStandardError);

/// Sets `sawDamage` when the decoder logs an error in its data or conceals damage in a picture. Not every
/// decoder marks concealed frames, but all log a message. Call before the decoder is opened.
void watchForDamage(AVCodecContext& decoder, std::atomic<bool>& sawDamage);

}  // namespace zeb::ffmpeg
