#include "ui/feedback/DockProgressController.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zeb {
namespace {

constexpr int tileSize = 128;  // points
constexpr std::chrono::milliseconds timeBetweenDrawings{100};

/// What is not a number counts as nothing done.
double clampedProgress(double progress) {
    return progress > 0 ? std::min(progress, 1.0) : 0;
}

}  // namespace

DockProgressController::DockProgressController(Services services, QImage appIcon)
    : m_services(std::move(services)), m_view(tileSize, std::move(appIcon), m_services.accent()) {}

void DockProgressController::update(double progress) {
    m_isShown = true;
    m_view.setProgress(clampedProgress(progress));
    m_needsDisplay = true;
    if (!m_isResting) redraw();
}

void DockProgressController::clear() {
    if (!m_isShown) return;
    m_isShown = false;
    m_needsDisplay = false;
    m_services.tile.clear();
}

void DockProgressController::redraw() {
    m_needsDisplay = false;
    m_view.setAccent(m_services.accent());
    m_services.tile.show(m_view.draw(m_services.tile.devicePixelRatio()), m_view.progress());
    rest();
}

void DockProgressController::rest() {
    m_isResting = true;
    m_services.mainActor.postAfter(timeBetweenDrawings, [this, alive = std::weak_ptr(m_alive)] {
        if (alive.expired()) return;
        m_isResting = false;
        if (m_needsDisplay) redraw();
    });
}

}  // namespace zeb
