#include "ui/presets/PresetSettingsModel.h"

#include "platform/text/LocalizedText.h"
#include "ui/presets/Preset.h"

namespace zeb {
namespace {

constexpr PresetSize emptyPresetSize = {1280, 720};
constexpr PresetSize size4K = {3840, 2160};

/// Converts a negative number to an index past the end.
std::size_t placeOf(int number) {
    return static_cast<std::size_t>(number);
}

}  // namespace

PresetSettingsModel::PresetSettingsModel(UserDefaults& defaults, NotificationCenter& notifications,
                                         QObject* parent)
    : QAbstractListModel(parent),
      m_editor(defaults, notifications,
               {.listChanged =
                    [this] {
                        // The editor notifies after the change, so reset the model as a whole.
                        beginResetModel();
                        endResetModel();
                        emit countChanged();
                    },
                .rowChanged = [this](std::size_t row) { rowChanged(row); },
                .settingsChanged = [this] { emit settingsChanged(); }}) {}

int PresetSettingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_editor.userPresets().size());
}

QVariant PresetSettingsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const UserPreset& preset = m_editor.userPresets()[placeOf(index.row())];
    switch (role) {
        case nameRole:
            return QString::fromStdString(preset.name);
        case sideWidthRole:
            return windowNumber(preset.width);
        case sideHeightRole:
            return windowNumber(preset.height);
        default:
            return {};
    }
}

QHash<int, QByteArray> PresetSettingsModel::roleNames() const {
    return {{nameRole, "name"}, {sideWidthRole, "sideWidth"}, {sideHeightRole, "sideHeight"}};
}

void PresetSettingsModel::rowChanged(std::size_t row) {
    const QModelIndex changed = index(static_cast<int>(row));
    emit dataChanged(changed, changed);
}

// MARK: Built-in presets

QList<int> PresetSettingsModel::builtInWidths() const {
    QList<int> widths;
    for (const BuiltInPreset& preset : builtInPresets)
        widths << windowNumber(m_editor.builtInSize(preset).width);
    return widths;
}

QList<int> PresetSettingsModel::builtInHeights() const {
    QList<int> heights;
    for (const BuiltInPreset& preset : builtInPresets)
        heights << windowNumber(m_editor.builtInSize(preset).height);
    return heights;
}

void PresetSettingsModel::setBuiltInWidth(int place, int width) {
    if (placeOf(place) < builtInPresets.size())
        m_editor.setBuiltInWidth(builtInPresets[placeOf(place)], width);
}

void PresetSettingsModel::setBuiltInHeight(int place, int height) {
    if (placeOf(place) < builtInPresets.size())
        m_editor.setBuiltInHeight(builtInPresets[placeOf(place)], height);
}

// MARK: The user's presets

void PresetSettingsModel::addEmptyPreset() {
    m_editor.addUserPreset(localizedText("new_preset_name"), emptyPresetSize.width, emptyPresetSize.height);
}

void PresetSettingsModel::add4KPreset() {
    m_editor.addUserPreset("4K", size4K.width, size4K.height);
}

void PresetSettingsModel::removePreset(int row) {
    if (placeOf(row) < m_editor.userPresets().size())
        m_editor.deleteUserPreset(std::string(m_editor.userPresets()[placeOf(row)].id));
}

void PresetSettingsModel::setName(int row, const QString& name) {
    m_editor.setName(placeOf(row), name.toStdString());
}

void PresetSettingsModel::setPresetWidth(int row, int width) {
    m_editor.setWidth(placeOf(row), width);
}

void PresetSettingsModel::setPresetHeight(int row, int height) {
    m_editor.setHeight(placeOf(row), height);
}

}  // namespace zeb
