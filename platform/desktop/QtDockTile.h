#pragma once

#include <QIcon>

#include "platform/desktop/DockTile.h"

namespace zeb {

/// The name of the application's desktop entry, which identifies its progress to desktops.
inline constexpr const char* desktopEntryName = "zebmaker.desktop";

/// Sets the icon of the application's windows, and sends the signal
/// `com.canonical.Unity.LauncherEntry.Update` on the session bus, which several docks and task bars receive.
/// Without a session bus only the icon changes. The application object of Qt's windows must exist.
class QtDockTile final : public DockTile {
public:
    double devicePixelRatio() const override;
    void show(const QImage& picture, double progress) override;
    void clear() override;

private:
    void signalProgress(double progress, bool isVisible);

    bool m_isShown = false;
    QImage m_picture;    ///< the picture shown last
    QIcon m_normalIcon;  ///< the original icon, while a picture is shown
};

}  // namespace zeb
