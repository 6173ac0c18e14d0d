#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QQuickTextDocument>
#include <QString>

namespace zeb {

/// Shows text in a document; lines are appended at the end and the oldest are removed at the start. Only the
/// differences are changed in the document, so that a selection keeps its text. Main thread.
class LogText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument* document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)

public:
    using QObject::QObject;

    QQuickTextDocument* document() const { return m_document; }
    /// Fills the document with the text.
    void setDocument(QQuickTextDocument* document);
    /// The lines, separated by line feeds.
    const QString& text() const { return m_text; }
    void setText(const QString& text);

signals:
    void documentChanged();
    void textChanged();
    /// Lines were appended after the first `length` characters.
    void appended(int length);
    /// Lines with a total height of `height` were removed from the start.
    void shortened(double height);

private:
    void drop(qsizetype characters);
    void append(const QString& text);

    QQuickTextDocument* m_document = nullptr;
    QString m_text;
};

}  // namespace zeb
