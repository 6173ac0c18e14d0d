#pragma once

namespace zeb {

/// The progress of a run where the desktop shows the application: its icon in the dock, the task bar, the
/// switcher. Used on the main thread; never fails visibly.
class DockProgress {
public:
    virtual ~DockProgress() = default;

    /// Shows this much, from 0 to 1; values beyond count as the nearer end.
    virtual void update(double progress) = 0;
    /// Shows the plain icon again.
    virtual void clear() = 0;
};

}  // namespace zeb
