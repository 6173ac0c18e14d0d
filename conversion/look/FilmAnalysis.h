#pragma once

#include <functional>
#include <string>

#include "conversion/plan/Settings.h"
#include "media/Media.h"

namespace zeb {

/// Replaces automatic settings with values found in sample pictures of the whole film: automatic cropping
/// with a rectangle without the black bars (or none), automatic levels with the values of black and white.
/// Other settings are not changed; without automatic ones no picture is decoded. The result is deterministic
/// for a given film and settings, whatever the time range.
///
/// `threads`: decoder threads. `logged` receives a line for each finding and may be empty. Throws like
/// `samplePictures`, and `SettingsError`.
Settings settleAutomatic(const MediaAsset& asset, const Settings& settings, int threads,
                         const IsCancelled& isCancelled,
                         const std::function<void(const std::string&)>& logged);

}  // namespace zeb
