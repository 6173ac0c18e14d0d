#pragma once

#include <QColor>
#include <QPalette>

class QQmlEngine;

namespace zeb {

/// Returns a colour of the current theme by its name in Theme.qml. Main thread.
QColor themeColour(QQmlEngine& engine, const char* name);

/// Returns the theme's palette for dialogs that are not drawn by the style.
QPalette dialogPalette(QQmlEngine& engine);

}  // namespace zeb
