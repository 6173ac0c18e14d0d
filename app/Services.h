#pragma once

#include <memory>

#include "conversion/ConversionRun.h"
#include "conversion/model/ConverterServices.h"
#include "platform/NotificationCenter.h"
#include "platform/SecurityScope.h"
#include "platform/SystemClock.h"
#include "platform/ThreadTasks.h"
#include "platform/ToneBeep.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "platform/posix/PropertyListDefaults.h"
#include "platform/qt/QtDockTile.h"
#include "platform/qt/QtFilePanels.h"
#include "platform/qt/QtMainActor.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/sdl/SDLAudioOutput.h"
#include "player/ZEBPlayerModel.h"
#include "ui/AppSoundPlayer.h"

namespace zeb {

/// The services of the system that the application's windows share. Made once, on the main thread, while the
/// application object exists.
struct Services {
    NotificationCenter notifications;
    QtMainActor mainActor;
    PropertyListDefaults defaults{PropertyListDefaults::standardPath(), notifications};
    SystemClock clock;
    std::unique_ptr<MediaLibrary> media = makeFFmpegMediaLibrary(MediaLogging::silent);
    ConversionRun conversion{*media};
    SDLAudioOutput audioOutput;
    ToneBeep beep{audioOutput};
    AppSoundPlayer sounds{{defaults, *media, audioOutput, beep, mainActor}};
    QtPasteboard pasteboard;
    OpenSecurityScope scope;
    QtDockTile dockTile;
    QtFilePanels panels;
    ThreadTasks tasks;  ///< last: what runs ends before what it uses goes

    PlayerServices player() { return {makeFileMovieReader, audioOutput, mainActor, tasks, clock}; }
    ConverterServices converter() {
        return {*media,
                [this](const std::string& input, OutputPlace& output, const Settings& settings,
                       const ConversionCallbacks& callbacks) {
                    conversion.convert(input, output, settings, callbacks);
                },
                defaults,
                panels,
                pasteboard,
                sounds,
                scope,
                mainActor,
                tasks,
                clock};
    }
};

}  // namespace zeb
