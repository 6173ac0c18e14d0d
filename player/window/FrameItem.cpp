#include "player/window/FrameItem.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace zeb {
namespace {

/// Returns a picture that shares the bytes of a frame and keeps the frame alive.
QImage imageOn(const ZEBPlayerModel::Image& frame) {
    auto* owner = new ZEBPlayerModel::Image(frame);
    // On little-endian machines this format is the byte order blue, green, red, alpha.
    return {frame->pixels.data(),
            frame->width,
            frame->height,
            static_cast<qsizetype>(frame->width) * 4,
            QImage::Format_ARGB32_Premultiplied,
            [](void* held) { delete static_cast<ZEBPlayerModel::Image*>(held); },
            owner};
}

}  // namespace

FrameItem::FrameItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void FrameItem::setPlayer(ZEBPlayerModel* player) {
    if (player == m_player) return;
    if (m_player) disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    const auto take = [this] {
        m_image = m_player ? m_player->image() : nullptr;
        m_imageIsNew = true;
        update();
    };
    if (m_player) connect(m_player, &ZEBPlayerModel::imageChanged, this, take);
    take();
    emit playerChanged();
}

QRectF FrameItem::placeOf(QSizeF frame, QSizeF area, double devicePixelRatio) {
    double scale = std::min(area.width() / frame.width(), area.height() / frame.height());
    const double whole = std::round(scale * devicePixelRatio);
    const double overlap = std::max(frame.width() * whole - area.width() * devicePixelRatio,
                                    frame.height() * whole - area.height() * devicePixelRatio);
    if (whole >= 1 &&
        std::abs(scale * devicePixelRatio - whole) * std::max(frame.width(), frame.height()) < 1 &&
        overlap < 1) {
        scale = whole / devicePixelRatio;
    }
    const QSizeF size = frame * scale;
    const auto onPixel = [devicePixelRatio](double position) {
        return std::floor(position * devicePixelRatio) / devicePixelRatio;
    };
    return {QPointF(onPixel((area.width() - size.width()) / 2), onPixel((area.height() - size.height()) / 2)),
            size};
}

QSGNode* FrameItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    auto* node = static_cast<QSGImageNode*>(old);
    if (!m_image || m_image->width < 1 || m_image->height < 1) {
        delete node;
        return nullptr;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Nearest);
        m_imageIsNew = true;
    }
    if (std::exchange(m_imageIsNew, false)) {
        node->setTexture(window()->createTextureFromImage(imageOn(m_image)));
        node->setSourceRect(0, 0, m_image->width, m_image->height);
    }
    node->setRect(
        placeOf(QSizeF(m_image->width, m_image->height), size(), window()->effectiveDevicePixelRatio()));
    return node;
}

void FrameItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

}  // namespace zeb
