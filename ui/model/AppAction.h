#pragma once

#include <string>
#include <variant>

#include "platform/text/URL.h"

namespace zeb {

/// Use this file as the source of the converter.
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

/// An action requested from outside the application.
using AppAction = std::variant<EncodeAction, PlayAction>;

/// A request for an action. The id is unique, so that two requests for the same action differ.
struct AppActionRequest {
    std::string id;  ///< a random UUID in textual form
    AppAction action;

    bool operator==(const AppActionRequest&) const = default;
};

}  // namespace zeb
