#pragma once

#include <functional>
#include <string>

#include "conversion/ConversionRun.h"
#include "conversion/Settings.h"
#include "conversion/SoundEffects.h"
#include "platform/Clock.h"
#include "platform/FilePanels.h"
#include "platform/MainActor.h"
#include "platform/Media.h"
#include "platform/OutputPlace.h"
#include "platform/Pasteboard.h"
#include "platform/SecurityScope.h"
#include "platform/Tasks.h"
#include "platform/UserDefaults.h"

namespace zeb {

/// What a converter model stands on. All of it outlives the model; what tasks use (media, conversion, scope,
/// main actor) outlives `tasks`.
struct ConverterServices {
    /// `ConversionRun::convert`, or a stand-in of a test. Called on a task's thread.
    using Convert = std::function<void(const std::string& input, OutputPlace& output,
                                       const Settings& settings, const ConversionCallbacks& callbacks)>;

    const MediaLibrary& media;
    Convert convert;
    UserDefaults& defaults;
    FilePanels& panels;
    Pasteboard& pasteboard;
    SoundEffects& sounds;
    SecurityScope& scope;
    MainActor& mainActor;
    Tasks& tasks;
    const Clock& clock;
};

}  // namespace zeb
