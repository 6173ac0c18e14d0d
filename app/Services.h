#pragma once

#include "platform/NotificationCenter.h"
#include "platform/SystemClock.h"
#include "platform/ThreadTasks.h"
#include "platform/posix/PropertyListDefaults.h"
#include "platform/qt/QtMainActor.h"
#include "platform/sdl/SDLAudioOutput.h"
#include "player/ZEBPlayerModel.h"

namespace zeb {

/// The services of the system that the application's windows share. Made once, on the main thread, while the
/// application object exists.
struct Services {
    NotificationCenter notifications;
    QtMainActor mainActor;
    PropertyListDefaults defaults{PropertyListDefaults::standardPath(), notifications, mainActor};
    SystemClock clock;
    SDLAudioOutput audioOutput;
    ThreadTasks tasks;  ///< last: what runs ends before what it uses goes

    PlayerServices player() { return {makeFileMovieReader, audioOutput, mainActor, tasks, clock}; }
};

}  // namespace zeb
