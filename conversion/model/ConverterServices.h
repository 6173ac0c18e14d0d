#pragma once

#include <functional>
#include <string>

#include "conversion/model/SoundEffects.h"
#include "conversion/plan/Settings.h"
#include "conversion/run/ConversionRun.h"
#include "media/Media.h"
#include "platform/desktop/FilePanels.h"
#include "platform/files/OutputPlace.h"
#include "platform/files/SecurityScope.h"
#include "platform/settings/UserDefaults.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/MainActor.h"
#include "platform/tasks/Tasks.h"

namespace zeb {

/// Services used by a converter model. All of them outlive the model. Media, conversion, scope and main
/// actor, which tasks use, outlive `tasks`.
struct ConverterServices {
    /// `ConversionRun::convert`, or a test double. Called on a task's thread.
    using Convert = std::function<void(const std::string& input, OutputPlace& output,
                                       const Settings& settings, const ConversionCallbacks& callbacks)>;

    const MediaLibrary& media;
    Convert convert;
    UserDefaults& defaults;
    FilePanels& panels;
    std::function<void(const std::string& text)>
        copyText;  ///< replaces the contents of the clipboard (UTF-8)
    SoundEffects& sounds;
    SecurityScope& scope;
    MainActor& mainActor;
    Tasks& tasks;
    const Clock& clock;
};

}  // namespace zeb
