#include "platform/qt/style/Texts.h"

#include <cmath>
#include <vector>

#include "platform/LocalizedText.h"

namespace zeb {
namespace {

TextArgument argumentOf(const QVariant& value) {
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || value.typeId() == QMetaType::QString) return value.toString().toStdString();
    // Numbers of QML are real ones, whatever they count.
    if (number == std::floor(number) && std::abs(number) < 0x1p53) return static_cast<std::int64_t>(number);
    return number;
}

}  // namespace

QString Texts::localizedText(const QString& key, const QVariantList& arguments) const {
    std::vector<TextArgument> values;
    for (const QVariant& argument : arguments)
        values.push_back(argumentOf(argument));
    return QString::fromStdString(
        zeb::localizedText(key.toStdString(), std::span<const TextArgument>(values)));
}

}  // namespace zeb
