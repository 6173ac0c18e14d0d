#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QQuickTextDocument>
#include <QString>

namespace zeb {

/// Shows lines in a text document that grow at the end and lose the oldest at the start. Only what differs is
/// changed there, so that a selection in the document stays on its words. Main thread.
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
    /// Lines were added behind the first `length` characters.
    void appended(int length);
    /// Lines were taken from the start; together they were `height` high.
    void shortened(double height);

private:
    void drop(qsizetype characters);
    void append(const QString& text);

    QQuickTextDocument* m_document = nullptr;
    QString m_text;
};

}  // namespace zeb
