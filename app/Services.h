#pragma once

#include <QClipboard>
#include <QGuiApplication>
#include <memory>

#include "conversion/model/ConverterServices.h"
#include "conversion/run/ConversionRun.h"
#include "media/Media.h"
#include "platform/desktop/QtDockTile.h"
#include "platform/desktop/QtFilePanels.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/files/SecurityScope.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/posix/PropertyListDefaults.h"
#include "platform/sound/sdl/SDLAudioOutput.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/ThreadTasks.h"
#include "player/ZEBPlayerModel.h"
#include "ui/feedback/AppSoundPlayer.h"

namespace zeb {

/// The system services shared by the application's windows. Created once, on the main thread, while the
/// application object exists.
struct Services {
    NotificationCenter notifications;
    QtMainActor mainActor;
    PropertyListDefaults defaults{PropertyListDefaults::standardPath(), notifications};
    SystemClock clock;
    std::unique_ptr<MediaLibrary> media = makeFFmpegMediaLibrary(MediaLogging::silent);
    ConversionRun conversion{*media};
    SDLAudioOutput audioOutput;
    AppSoundPlayer sounds{{defaults, *media, audioOutput, mainActor}};
    OpenSecurityScope scope;
    QtDockTile dockTile;
    QtFilePanels panels;
    ThreadTasks tasks;  ///< last member: destroyed first, so tasks end before the services they use

    PlayerServices player() { return {makeFileMovieReader, audioOutput, mainActor, tasks, clock}; }
    ConverterServices converter() {
        return {*media,
                [this](const std::string& input, OutputPlace& output, const Settings& settings,
                       const ConversionCallbacks& callbacks) {
                    conversion.convert(input, output, settings, callbacks);
                },
                defaults,
                panels,
                [](const std::string& text) {
                    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
                },
                sounds,
                scope,
                mainActor,
                tasks,
                clock};
    }
};

}  // namespace zeb
