#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ui/model/AppAction.h"

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

}  // namespace zeb
