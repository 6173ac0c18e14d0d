#pragma once

#include <QtQml/qqmlregistration.h>
#include <QQuickItem>
#include <QSizeF>

#include "player/ZEBPlayerModel.h"

namespace zeb {

/// Shows the whole frame of a player with its aspect ratio kept and without smoothing. Black without a frame.
class FrameItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(zeb::ZEBPlayerModel* player READ player WRITE setPlayer NOTIFY playerChanged)

public:
    explicit FrameItem(QQuickItem* parent = nullptr);

    ZEBPlayerModel* player() const { return m_player; }
    void setPlayer(ZEBPlayerModel* player);

    /// Returns where a frame of `frame` pixels is drawn in an area: as large as possible, centred, the corner
    /// on a whole device pixel. Uses an integer scale if the frame then fills the area within a device pixel.
    static QRectF placeOf(QSizeF frame, QSizeF area, double devicePixelRatio);

signals:
    void playerChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    ZEBPlayerModel* m_player = nullptr;
    ZEBPlayerModel::Image m_image;
    bool m_imageIsNew = false;
};

}  // namespace zeb
