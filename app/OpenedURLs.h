#pragma once

#include <functional>
#include <vector>

#include "platform/tasks/MainActor.h"
#include "platform/text/URL.h"
#include "ui/model/AppActionRouter.h"

namespace zeb {

/// Opens a movie in a player window and, if `hideMaker`, hides the converter window meanwhile. On the main
/// thread.
using OpenPlayer = std::function<void(const URL& url, bool hideMaker)>;
/// Brings the application to the front. On the main thread.
using ActivateApplication = std::function<void()>;

/// Takes files opened with the application to where they belong: movies of this computer to `openPlayer` (the
/// converter window hidden), anything else, whatever its scheme, as an encode request to `router`, followed
/// by `activate`; the converter refuses what is no file of this computer. Each is a piece of work of its own
/// on `mainActor`, in the order given; nothing has happened when this returns. `router` must outlive the
/// work.
void routeOpenedURLs(const std::vector<URL>& urls, MainActor& mainActor, const OpenPlayer& openPlayer,
                     AppActionRouter& router, const ActivateApplication& activate);

}  // namespace zeb
