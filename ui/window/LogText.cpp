#include "ui/window/LogText.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace zeb {
namespace {

/// Returns the number of characters, in whole lines, to remove from the start of `before` so that the rest is
/// a prefix of `after`. Returns the length of `before` if no line remains.
qsizetype droppedCharacters(const QString& before, const QString& after) {
    qsizetype start = 0;
    while (!after.startsWith(QStringView(before).sliced(start))) {
        const qsizetype end = before.indexOf('\n', start);
        if (end < 0) return before.size();
        start = end + 1;
    }
    return start;
}

}  // namespace

void LogText::setDocument(QQuickTextDocument* document) {
    if (document == m_document) return;
    m_document = document;
    if (m_document) {
        // The text is read-only; an undo history would only store every line twice.
        m_document->textDocument()->setUndoRedoEnabled(false);
        m_document->textDocument()->setPlainText(m_text);
    }
    emit documentChanged();
}

void LogText::setText(const QString& text) {
    if (text == m_text) return;
    const qsizetype dropped = droppedCharacters(m_text, text);
    if (m_document) {
        drop(dropped);
        append(text.sliced(m_text.size() - dropped));
    }
    m_text = text;
    emit textChanged();
}

void LogText::drop(qsizetype characters) {
    if (characters == 0) return;
    QTextDocument& document = *m_document->textDocument();
    const auto position = static_cast<int>(characters);
    const auto topAt = [&document](int place) {
        return document.documentLayout()->blockBoundingRect(document.findBlock(place)).top();
    };
    const double height = topAt(position) - topAt(0);
    QTextCursor cursor(&document);
    cursor.setPosition(position, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    emit shortened(height);
}

void LogText::append(const QString& text) {
    QTextCursor cursor(m_document->textDocument());
    cursor.movePosition(QTextCursor::End);
    const int length = cursor.position();
    cursor.insertText(text);
    emit appended(length);
}

}  // namespace zeb
