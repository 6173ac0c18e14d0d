#include "platform/desktop/style/ThemeColours.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <memory>

namespace zeb {

QColor themeColour(QQmlEngine& engine, const char* name) {
    QQmlComponent component(&engine);
    component.setData(
        QByteArray("import QtQuick; import ZEBStyle; QtObject { property color colour: Theme.") + name + " }",
        QUrl());
    const std::unique_ptr<QObject> holder(component.create());
    return holder ? holder->property("colour").value<QColor>() : QColor();
}

QPalette dialogPalette(QQmlEngine& engine) {
    const auto colour = [&engine](const char* name) { return themeColour(engine, name); };
    QPalette palette(colour("button"), colour("window"));
    palette.setColor(QPalette::WindowText, colour("text"));
    palette.setColor(QPalette::Text, colour("text"));
    palette.setColor(QPalette::ButtonText, colour("text"));
    palette.setColor(QPalette::PlaceholderText, colour("disabledText"));
    palette.setColor(QPalette::Base, colour("field"));
    palette.setColor(QPalette::AlternateBase, colour("card"));
    palette.setColor(QPalette::Highlight, colour("accent"));
    palette.setColor(QPalette::HighlightedText, colour("accentText"));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colour("disabledText"));
    return palette;
}

}  // namespace zeb
