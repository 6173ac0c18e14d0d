#include "ui/window/AnimatedGIFView.h"

#include <QBrush>
#include <QPainter>
#include <QTransform>
#include <cmath>
#include <vector>

#include "platform/files/StandardFolders.h"

namespace zeb {
namespace {

constexpr qreal cornerRadius = 8;
constexpr qreal shadowRadius = 22;
constexpr qreal shadowDrop = 12;
constexpr qreal shadowOpacity = 0.35;
constexpr qreal outlineOpacity = 0.16;

/// Applies a running mean to one row or column of bytes.
void blurRow(uchar* first, qsizetype step, int count, int radius, std::vector<uchar>& copy) {
    copy.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        copy[static_cast<std::size_t>(i)] = first[i * step];
    const auto at = [&](int i) { return i < 0 || i >= count ? 0 : copy[static_cast<std::size_t>(i)]; };
    int sum = 0;
    for (int i = -radius; i <= radius; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        first[i * step] = static_cast<uchar>(sum / (2 * radius + 1));
        sum += at(i + radius + 1) - at(i - radius);
    }
}

/// Applies three running means, which approximate a Gaussian.
void blur(QImage& mask, int radius) {
    std::vector<uchar> copy;
    uchar* const bytes = mask.bits();
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < mask.height(); ++y)
            blurRow(bytes + y * mask.bytesPerLine(), 1, mask.width(), radius, copy);
        for (int x = 0; x < mask.width(); ++x)
            blurRow(bytes + x, mask.bytesPerLine(), mask.height(), radius, copy);
    }
}

QImage shadowOf(QSizeF item, QRectF picture, qreal devicePixelRatio) {
    QImage shadow((item * devicePixelRatio).toSize(), QImage::Format_Alpha8);
    shadow.fill(0);
    shadow.setDevicePixelRatio(devicePixelRatio);
    QPainter painter(&shadow);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>(shadowOpacity)));
    painter.drawRoundedRect(picture.translated(0, shadowDrop), cornerRadius, cornerRadius);
    painter.end();
    // The standard deviation of the Gaussian is half its radius; three means of width w have deviation w / 2.
    blur(shadow, static_cast<int>(std::lround(shadowRadius * devicePixelRatio / 2)));
    return shadow;
}

}  // namespace

AnimatedGIFView::AnimatedGIFView(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

qreal AnimatedGIFView::shadowMargin() {
    return shadowRadius * 1.5 + shadowDrop;
}

void AnimatedGIFView::setResourceName(const QString& name) {
    if (name == m_resourceName) return;
    m_resourceName = name;
    load();
    emit resourceChanged();
}

void AnimatedGIFView::setFileExtension(const QString& extension) {
    if (extension == m_fileExtension) return;
    m_fileExtension = extension;
    load();
    emit resourceChanged();
}

void AnimatedGIFView::load() {
    m_movie.reset();
    if (m_resourceName.isEmpty() || m_fileExtension.isEmpty()) return;
    const auto path = resourcePath("artwork/" + m_resourceName.toStdString(), m_fileExtension.toStdString());
    if (!path) return;
    m_movie = std::make_unique<QMovie>(QString::fromStdString(*path));
    m_movie->setCacheMode(QMovie::CacheAll);
    connect(m_movie.get(), &QMovie::frameChanged, this, [this] { update(); });
    if (isVisible()) m_movie->start();
}

void AnimatedGIFView::itemChange(ItemChange change, const ItemChangeData& data) {
    if (change == ItemVisibleHasChanged && m_movie) {
        if (data.boolValue) {
            m_movie->start();
        } else {
            m_movie->stop();
        }
    }
    QQuickPaintedItem::itemChange(change, data);
}

QRectF AnimatedGIFView::pictureArea() const {
    const qreal margin = shadowMargin();
    const QRectF area = boundingRect().adjusted(margin, margin, -margin, -margin);
    const QSizeF frame = m_movie ? m_movie->currentImage().size() : QSize();
    if (frame.isEmpty() || area.isEmpty()) return area;
    QRectF picture(QPointF(), frame.scaled(area.size(), Qt::KeepAspectRatio));
    picture.moveCenter(area.center());
    return picture;
}

void AnimatedGIFView::paint(QPainter* painter) {
    const QRectF picture = pictureArea();
    if (picture.isEmpty()) return;
    const qreal ratio = painter->device()->devicePixelRatioF();
    if (m_shadow.size() != (size() * ratio).toSize()) m_shadow = shadowOf(size(), picture, ratio);
    painter->drawImage(QPointF(), m_shadow);

    const QImage frame = m_movie ? m_movie->currentImage() : QImage();
    if (!frame.isNull()) {
        // Filled with the picture: a clip would leave the corners without antialiasing.
        QBrush brush(frame);
        QTransform toArea = QTransform::fromTranslate(picture.x(), picture.y());
        toArea.scale(picture.width() / frame.width(), picture.height() / frame.height());
        brush.setTransform(toArea);
        painter->setBrush(brush);
        painter->setPen(Qt::NoPen);
        painter->drawRoundedRect(picture, cornerRadius, cornerRadius);
    }
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(QColor::fromRgbF(1, 1, 1, static_cast<float>(outlineOpacity)), 1));
    painter->drawRoundedRect(picture.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

}  // namespace zeb
