#pragma once

#include <QImage>

namespace zeb {

/// The place where the desktop shows the application. Used on the main thread; never fails visibly.
class DockTile {
public:
    virtual ~DockTile() = default;

    /// Pixels to a point of the pictures that suit it best.
    virtual double devicePixelRatio() const = 0;
    /// Shows `picture` in place of the icon, and `progress` (0 to 1) where the desktop draws a bar of its
    /// own.
    virtual void show(const QImage& picture, double progress) = 0;
    /// Shows the icon that was there before, and no bar.
    virtual void clear() = 0;
};

}  // namespace zeb
