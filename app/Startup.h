#pragma once

#include "platform/text/LocalizedText.h"

namespace zeb {

/// Lets the windows be drawn without a graphics processor where there is none, or only one that is imitated;
/// a choice that the environment makes (QT_QUICK_BACKEND, QSG_RHI_BACKEND) stands. To be called once, after
/// the application object and before the first window.
void chooseRenderer();

/// What the user has chosen for this system.
TextLocale systemTextLocale();

}  // namespace zeb
