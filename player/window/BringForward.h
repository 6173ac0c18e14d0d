#pragma once

#include <QWindow>

namespace zeb {

/// Shows a window in front of the others and gives it the keyboard.
inline void bringForward(QWindow& window) {
    // It keeps its size, maximised ones too.
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.setVisible(true);
    window.raise();
    window.requestActivate();
}

}  // namespace zeb
