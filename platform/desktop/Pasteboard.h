#pragma once

#include <string>

namespace zeb {

/// The clipboard. Used on the main thread.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Replaces the contents by `text` (UTF-8).
    virtual void setText(const std::string& text) = 0;
};

}  // namespace zeb
