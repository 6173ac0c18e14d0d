#pragma once

#include <QtQml/qqml.h>
#include <QtQml/qqmlregistration.h>

#include "conversion/model/ConverterViewModel.h"
#include "ui/model/ContentViewModel.h"

namespace zeb {

// Registers models with QML; the models themselves do not depend on QML.

struct ContentViewModelForQML {
    Q_GADGET
    QML_FOREIGN(zeb::ContentViewModel)
    QML_NAMED_ELEMENT(ContentViewModel)
    QML_UNCREATABLE("The application has one")
};

struct ConverterViewModelForQML {
    Q_GADGET
    QML_FOREIGN(zeb::ConverterViewModel)
    QML_NAMED_ELEMENT(ConverterViewModel)
    QML_UNCREATABLE("The application has one")
};

struct SettingsModelForQML {
    Q_GADGET
    QML_FOREIGN(zeb::SettingsModel)
    QML_NAMED_ELEMENT(SettingsModel)
    QML_UNCREATABLE("The converter has one")
};

}  // namespace zeb
