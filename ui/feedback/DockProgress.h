#pragma once

namespace zeb {

/// Shows the progress of a run on the application's icon in the dock, task bar or switcher. Main thread.
/// Errors are ignored.
class DockProgress {
public:
    virtual ~DockProgress() = default;

    /// Shows `progress`, clamped to 0 ... 1.
    virtual void update(double progress) = 0;
    /// Shows the plain icon.
    virtual void clear() = 0;
};

}  // namespace zeb
