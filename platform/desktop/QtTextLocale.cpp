#include "platform/desktop/QtTextLocale.h"

#include <QLocale>
#include <QStringList>

namespace zeb {

TextLocale systemTextLocale() {
    std::vector<std::string> preferred;
    for (const QString& name : QLocale::system().uiLanguages())
        preferred.push_back(name.toStdString());
    return {bestTextLanguage(preferred), QLocale::system().decimalPoint().toStdString()};
}

}  // namespace zeb
