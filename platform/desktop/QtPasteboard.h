#pragma once

#include "platform/desktop/Pasteboard.h"

namespace zeb {

/// The desktop's clipboard. The application object of Qt's windows must exist.
class QtPasteboard final : public Pasteboard {
public:
    void setText(const std::string& text) override;
};

}  // namespace zeb
