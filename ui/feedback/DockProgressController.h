#pragma once

#include <QColor>
#include <QImage>
#include <functional>
#include <memory>

#include "platform/desktop/DockTile.h"
#include "platform/tasks/MainActor.h"
#include "ui/feedback/DockProgress.h"
#include "ui/feedback/DockProgressView.h"

namespace zeb {

/// Draws the progress into the dock tile, at most ten times a second; what comes in between is left out but
/// for the newest, which is shown when its turn comes. Clearing happens at once.
class DockProgressController final : public DockProgress {
public:
    /// All of it outlives the controller.
    struct Services {
        DockTile& tile;
        MainActor& mainActor;
        std::function<QColor()> accent;  ///< the colour of choice of the palette of this moment
    };

    DockProgressController(Services services, QImage appIcon);

    void update(double progress) override;
    void clear() override;

private:
    void redraw();
    void rest();

    Services m_services;
    DockProgressView m_view;
    bool m_isShown = false;  ///< an update has come since the last clear
    bool m_needsDisplay = false;
    bool m_isResting = false;  ///< the last drawing is less than a tenth of a second ago
    std::shared_ptr<const int> m_alive = std::make_shared<const int>(0);
};

}  // namespace zeb
