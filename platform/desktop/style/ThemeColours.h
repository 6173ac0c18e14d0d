#pragma once

#include <QColor>
#include <QPalette>

class QQmlEngine;

namespace zeb {

/// A colour of the theme as it is now, by its name in Theme.qml. Main thread.
QColor themeColour(QQmlEngine& engine, const char* name);

/// The theme's colours for dialogs that are not drawn by the style.
QPalette dialogPalette(QQmlEngine& engine);

}  // namespace zeb
