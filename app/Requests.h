#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/tasks/MainActor.h"
#include "platform/text/URL.h"
#include "ui/model/AppAction.h"
#include "ui/model/AppActionRouter.h"

namespace zeb {

/// The scheme of requests from outside.
constexpr std::string_view requestScheme = "zebmaker";

/// What a URL that was opened asks for; nothing when it asks for nothing that we know. Any thread.
///
/// A file URL asks to play a movie ("zeb" in any case at its end) or to encode anything else. Others are
///
///     zebmaker://VERB?url=TARGET    or    zebmaker:VERB?url=TARGET
///
/// with "zebmaker", "url" and the verbs "play" and "encode" exactly so; for any other verb the target decides
/// as a file URL does. The target is a URL, percent-escaped once for the query; the first item "url" counts.
std::optional<AppAction> parseAppAction(const std::string& text);

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
