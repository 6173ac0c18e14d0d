#pragma once

#include "platform/base/Error.h"
#include "platform/text/LocalizedText.h"

namespace zeb {

/// Settings that contradict each other or the film. Domain "Settings"; the description is the English text.
class SettingsError : public PlatformError {
public:
    explicit SettingsError(const KeyedText& text) : PlatformError("Settings", 1, englishText(text), text) {}
};

}  // namespace zeb
