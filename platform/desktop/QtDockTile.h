#pragma once

#include <QIcon>

#include "platform/desktop/DockTile.h"

namespace zeb {

/// The name of the application's desktop entry, by which desktops know whose progress it is.
inline constexpr const char* desktopEntryName = "zebmaker.desktop";

/// The icon of the application's windows, and the signal `com.canonical.Unity.LauncherEntry.Update` on the
/// session bus, to which several desktops' docks and task bars listen. Without a session bus the icon is all.
/// The application object of Qt's windows must exist.
class QtDockTile final : public DockTile {
public:
    double devicePixelRatio() const override;
    void show(const QImage& picture, double progress) override;
    void clear() override;

private:
    void signalProgress(double progress, bool isVisible);

    bool m_isShown = false;
    QImage m_picture;    ///< shown last
    QIcon m_normalIcon;  ///< the one to go back to, while a picture is shown
};

}  // namespace zeb
