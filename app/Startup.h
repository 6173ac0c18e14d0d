#pragma once

#include "platform/text/LocalizedText.h"

namespace zeb {

/// Selects the software renderer if there is no graphics processor or only an emulated one. A choice by the
/// environment (QT_QUICK_BACKEND, QSG_RHI_BACKEND) takes precedence. Call once, after creating the
/// application object and before the first window.
void chooseRenderer();

/// Returns the locale that the user has set for this system.
TextLocale systemTextLocale();

}  // namespace zeb
