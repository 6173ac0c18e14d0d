#include "ui/feedback/DockProgressController.h"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace zeb {
namespace {

// In points.
constexpr double margin = 14;  // of the bar, on the left, right and bottom
constexpr double barHeight = 12;
constexpr double radius = barHeight / 2;
constexpr double outlineWidth = 1;

constexpr double trackOpacity = 0.45;
constexpr double outlineOpacity = 0.75;

}  // namespace

DockProgressView::DockProgressView(int size, QImage appIcon, QColor accent)
    : m_size(size), m_appIcon(std::move(appIcon)), m_accent(accent) {}

QImage DockProgressView::draw(double devicePixelRatio) const {
    const int pixels = static_cast<int>(std::lround(m_size * devicePixelRatio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    if (!m_appIcon.isNull()) {
        // QPainter's scaling skips pixels when it reduces an icon by a large factor.
        QImage icon = m_appIcon.scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        icon.setDevicePixelRatio(devicePixelRatio);
        painter.drawImage(QPointF(0, 0), icon);
    }

    const QRectF bar(margin, m_size - margin - barHeight, m_size - 2 * margin, barHeight);
    if (bar.width() <= 0) return image;
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>(trackOpacity)));
    painter.drawRoundedRect(bar, radius, radius);

    // Never narrower than the rounded ends.
    QRectF fill = bar;
    fill.setWidth(std::min(std::max(bar.width() * m_progress, barHeight), bar.width()));
    painter.setBrush(m_accent);
    painter.drawRoundedRect(fill, radius, radius);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, static_cast<float>(outlineOpacity)), outlineWidth));
    painter.drawRoundedRect(bar, radius, radius);
    return image;
}

namespace {

constexpr int tileSize = 128;  // points
constexpr std::chrono::milliseconds timeBetweenDrawings{100};

/// Treats NaN as 0.
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
