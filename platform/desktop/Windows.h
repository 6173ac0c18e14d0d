#pragma once

#include <QRect>
#include <QSize>
#include <QWindow>

namespace zeb {

/// Returns the part of a screen for the contents of a window: `available` (the screen without its panels)
/// less the frame that desktops draw around windows. The size of a frame is known only for visible windows,
/// so this assumes a large one. Device-independent pixels.
QRect roomForContents(const QRect& available);

/// Returns the position of a window's contents of `size`: centred in `roomForContents` and limited to it.
QRect placedContents(const QRect& available, const QSize& size);

/// Sets the size and minimum size of a window that is not shown yet, so that it fits its screen with its
/// frame, and centres it. Main thread.
void placeOnScreen(QWindow& window);

/// Shows a window in front of the others and gives it the keyboard focus.
inline void bringForward(QWindow& window) {
    // The size is kept, even if maximised.
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.setVisible(true);
    window.raise();
    window.requestActivate();
}

}  // namespace zeb
