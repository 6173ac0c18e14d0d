#pragma once

#include <string>
#include <variant>

#include "platform/text/URL.h"

namespace zeb {

/// Take this file as the converter's source.
struct EncodeAction {
    URL url;

    bool operator==(const EncodeAction&) const = default;
};

/// Open this movie in a player window.
struct PlayAction {
    URL url;
    bool hideMaker = false;  ///< hide the converter window while the player shows

    bool operator==(const PlayAction&) const = default;
};

/// What somebody outside asks the application to do.
using AppAction = std::variant<EncodeAction, PlayAction>;

/// One asking. The id is fresh every time, so that two requests for the same action differ.
struct AppActionRequest {
    std::string id;  ///< a random UUID in its textual form
    AppAction action;

    bool operator==(const AppActionRequest&) const = default;
};

}  // namespace zeb
