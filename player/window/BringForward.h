#pragma once

#include <QWindow>

namespace zeb {

/// Shows a window in front of the others and gives it the keyboard.
inline void bringForward(QWindow& window) {
    if (!window.isVisible() || window.visibility() == QWindow::Minimized) window.showNormal();
    window.raise();
    window.requestActivate();
}

}  // namespace zeb
