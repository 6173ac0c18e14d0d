#pragma once

#include <QImage>

namespace zeb {

/// The application's icon in the dock or task bar. Used on the main thread; errors are not reported.
class DockTile {
public:
    virtual ~DockTile() = default;

    /// Returns the best ratio of pixels to points for the pictures.
    virtual double devicePixelRatio() const = 0;
    /// Shows `picture` in place of the icon, and `progress` (0 to 1) if the desktop draws a progress bar.
    virtual void show(const QImage& picture, double progress) = 0;
    /// Restores the original icon and hides the progress bar.
    virtual void clear() = 0;
};

}  // namespace zeb
