#pragma once

#include <chrono>
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

/// The URL scheme of external requests.
constexpr std::string_view requestScheme = "zebmaker";

/// Returns the action requested by an opened URL; empty if the request is unknown. Any thread.
///
/// A file URL requests to play a movie (extension "zeb" in any case) or to encode any other file. Other URLs
/// are
///
///     zebmaker://VERB?url=TARGET    or    zebmaker:VERB?url=TARGET
///
/// with "zebmaker", "url" and the verbs "play" and "encode" case-sensitive. For any other verb the target
/// decides like a file URL. The target is a URL, percent-escaped once for the query; the first item "url" is
/// used.
std::optional<AppAction> parseAppAction(const std::string& text);

/// Opens a movie in a player window and, if `hideMaker`, hides the converter window while it is open. Main
/// thread only.
using OpenPlayer = std::function<void(const URL& url, bool hideMaker)>;
/// Brings the application to the front. Main thread only.
using ActivateApplication = std::function<void()>;

/// Dispatches files opened with the application: local movies to `openPlayer` (converter window hidden), all
/// other URLs, with any scheme, as encode requests to `router`, followed by `activate`. The converter rejects
/// URLs that are not local files. Each URL is posted separately to `mainActor` in the given order; nothing
/// has happened when this function returns. `router` must outlive the posted work.
void routeOpenedURLs(const std::vector<URL>& urls, MainActor& mainActor, const OpenPlayer& openPlayer,
                     AppActionRouter& router, const ActivateApplication& activate);

/// Removes the entries of the folder "SharedInbox" in `container` that were modified more than seven days
/// before `now`: folders with their contents, links without following them, hidden entries never. Does
/// nothing if the folder itself is a link. Ignores errors. Blocks until done.
void cleanSharedInbox(const std::optional<std::string>& container, std::chrono::system_clock::time_point now);

}  // namespace zeb
