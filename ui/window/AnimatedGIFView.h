#pragma once

#include <QtQml/qqmlregistration.h>
#include <QImage>
#include <QMovie>
#include <QQuickPaintedItem>
#include <QString>
#include <memory>

namespace zeb {

/// An animated picture from the application's resources in a rounded frame with a shadow. Painted here
/// because the software renderer supports neither rounded clips nor shadows. Empty if the resource does not
/// exist.
///
/// The picture keeps its aspect ratio inside the item minus `shadowMargin` on every side.
class AnimatedGIFView : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString resourceName READ resourceName WRITE setResourceName NOTIFY resourceChanged)
    Q_PROPERTY(QString fileExtension READ fileExtension WRITE setFileExtension NOTIFY resourceChanged)
    Q_PROPERTY(qreal shadowMargin READ shadowMargin CONSTANT)

public:
    explicit AnimatedGIFView(QQuickItem* parent = nullptr);

    QString resourceName() const { return m_resourceName; }
    void setResourceName(const QString& name);
    QString fileExtension() const { return m_fileExtension; }
    void setFileExtension(const QString& extension);
    static qreal shadowMargin();

    void paint(QPainter* painter) override;

signals:
    void resourceChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void load();
    QRectF pictureArea() const;

    QString m_resourceName;
    QString m_fileExtension;
    std::unique_ptr<QMovie> m_movie;
    QImage m_shadow;  ///< for the picture area's size, in device pixels
};

}  // namespace zeb
