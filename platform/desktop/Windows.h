#pragma once

#include <QRect>
#include <QSize>
#include <QWindow>

namespace zeb {

/// Returns the part of a screen that the contents of a window may cover: `available` (the screen without its
/// panels) less the frame that desktops draw around windows. Frames are known only of windows that are shown,
/// so this leaves room for a large one. Device-independent pixels.
QRect roomForContents(const QRect& available);

/// Returns where the contents of a window go that are to have `size`: no larger than their room, and in its
/// middle.
QRect placedContents(const QRect& available, const QSize& size);

/// Gives a window that is not shown yet a size and a minimum size that fit its screen together with its
/// frame, and centres it there. Main thread.
void placeOnScreen(QWindow& window);

/// Shows a window in front of the others and gives it the keyboard.
inline void bringForward(QWindow& window) {
    // It keeps its size, maximised ones too.
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.setVisible(true);
    window.raise();
    window.requestActivate();
}

}  // namespace zeb
