#pragma once

namespace zeb {

/// The system's error sound. Used on the main thread.
class SystemBeep {
public:
    virtual ~SystemBeep() = default;

    virtual void beep() = 0;
};

}  // namespace zeb
