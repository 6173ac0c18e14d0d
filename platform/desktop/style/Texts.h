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

    /// Calls `zeb::localizedText`: whole numbers fill %lld, other numbers %f, texts %@.
    Q_INVOKABLE QString localizedText(const QString& key, const QVariantList& arguments = {}) const;

    // Labels of menus: an ampersand marks the shortcut letter of an entry; two ampersands are a literal one.
    /// Returns the label that shows `text` unchanged.
    Q_INVOKABLE QString labelOf(const QString& text) const;
    /// Returns the marked letter in lower case; empty for a label without a mark.
    Q_INVOKABLE QString letterOf(const QString& label) const;
    /// Returns the text of a label without the mark.
    Q_INVOKABLE QString plainLabel(const QString& label) const;
    /// Returns a label as Qt's styled text, its marked letter underlined.
    Q_INVOKABLE QString styledLabel(const QString& label) const;
};

}  // namespace zeb
