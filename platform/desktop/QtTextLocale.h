#pragma once

#include "platform/text/TextLocale.h"

namespace zeb {

/// What the user has chosen for this system.
TextLocale systemTextLocale();

}  // namespace zeb
