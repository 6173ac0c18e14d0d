#pragma once

#include "platform/TextLocale.h"

namespace zeb {

/// What the user has chosen for this system.
TextLocale systemTextLocale();

}  // namespace zeb
