#pragma once

#include <QColor>
#include <QImage>
#include <functional>
#include <memory>

#include "platform/desktop/DockTile.h"
#include "platform/tasks/MainActor.h"
#include "ui/feedback/DockProgress.h"

namespace zeb {

/// The picture in the dock: the application's icon with a bar over its lower edge. Main thread.
class DockProgressView {
public:
    /// A square of `size` x `size` points. Without an icon (a null image) only the bar is drawn; `accent` is
    /// the colour of its filled part.
    DockProgressView(int size, QImage appIcon, QColor accent);

    double progress() const { return m_progress; }
    /// From 0 to 1.
    void setProgress(double progress) { m_progress = progress; }
    /// Sets the bar colour: the palette may change while the program runs.
    void setAccent(const QColor& accent) { m_accent = accent; }

    /// Draws the picture on a transparent background with `devicePixelRatio` pixels per point.
    QImage draw(double devicePixelRatio) const;

private:
    int m_size;
    QImage m_appIcon;
    QColor m_accent;
    double m_progress = 0;
};

/// Draws the progress into the dock tile, at most ten times a second. Of the updates between two drawings
/// only the latest is drawn, at the next drawing. `clear` takes effect immediately.
class DockProgressController final : public DockProgress {
public:
    /// All of them outlive the controller.
    struct Services {
        DockTile& tile;
        MainActor& mainActor;
        std::function<QColor()> accent;  ///< returns the current accent colour of the palette
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
