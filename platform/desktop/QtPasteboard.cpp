#include "platform/desktop/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace zeb {

void QtPasteboard::setText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

}  // namespace zeb
