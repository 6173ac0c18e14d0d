#include "platform/desktop/style/Texts.h"

#include <cmath>
#include <vector>

#include "platform/text/LocalizedText.h"

namespace zeb {
namespace {

TextArgument argumentOf(const QVariant& value) {
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || value.typeId() == QMetaType::QString) return value.toString().toStdString();
    // QML numbers are real numbers, also those that count things.
    if (number == std::floor(number) && std::abs(number) < 0x1p53) return static_cast<std::int64_t>(number);
    return number;
}

/// The parts of a label: text before the marked letter, the letter (may be empty), text after it.
struct MarkedLabel {
    QString before;
    QString letter;
    QString after;
};

MarkedLabel readLabel(const QString& label) {
    MarkedLabel read;
    for (qsizetype place = 0; place < label.size(); ++place) {
        const bool isMark = label[place] == '&' && place + 1 < label.size();
        if (isMark) ++place;
        if (isMark && label[place] != '&' && read.letter.isEmpty()) {
            read.letter = label[place];
        } else {
            (read.letter.isEmpty() ? read.before : read.after) += label[place];
        }
    }
    return read;
}

}  // namespace

QString Texts::localizedText(const QString& key, const QVariantList& arguments) const {
    std::vector<TextArgument> values;
    for (const QVariant& argument : arguments)
        values.push_back(argumentOf(argument));
    return QString::fromStdString(
        zeb::localizedText(key.toStdString(), std::span<const TextArgument>(values)));
}

QString Texts::labelOf(const QString& text) const {
    return QString(text).replace('&', "&&");
}

QString Texts::letterOf(const QString& label) const {
    return readLabel(label).letter.toLower();
}

QString Texts::plainLabel(const QString& label) const {
    const MarkedLabel read = readLabel(label);
    return read.before + read.letter + read.after;
}

QString Texts::styledLabel(const QString& label) const {
    const MarkedLabel read = readLabel(label);
    const QString letter = read.letter.isEmpty() ? QString() : "<u>" + read.letter.toHtmlEscaped() + "</u>";
    return read.before.toHtmlEscaped() + letter + read.after.toHtmlEscaped();
}

}  // namespace zeb
