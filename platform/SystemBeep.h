#pragma once

namespace zeb {

/// The plain sound for "that did not work". Used on the main thread.
class SystemBeep {
public:
    virtual ~SystemBeep() = default;

    virtual void beep() = 0;
};

}  // namespace zeb
