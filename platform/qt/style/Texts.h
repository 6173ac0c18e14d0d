#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QVariantList>

namespace zeb {

/// The application's texts for QML.
class Texts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// `zeb::localizedText`: whole numbers fill %lld, other numbers %f, texts %@.
    Q_INVOKABLE QString localizedText(const QString& key, const QVariantList& arguments = {}) const;
};

}  // namespace zeb
