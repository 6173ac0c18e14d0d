#include "conversion/model/SettingsModel.h"

#include <utility>

namespace zeb {

void SettingsModel::setValue(const Settings& value) {
    if (value == m_value) return;
    const Settings before = std::exchange(m_value, value);
    // Compare with the requested value: an observer may change the model during the notifications.
    const Settings after = value;
    const auto notify = [&](auto Settings::*field, void (SettingsModel::*changed)()) {
        if (before.*field != after.*field) emit(this->*changed)();
    };
    notify(&Settings::title, &SettingsModel::titleChanged);
    notify(&Settings::width, &SettingsModel::widthChanged);
    notify(&Settings::height, &SettingsModel::heightChanged);
    notify(&Settings::preserveAspect, &SettingsModel::preserveAspectChanged);
    notify(&Settings::fps, &SettingsModel::fpsChanged);
    notify(&Settings::fpsFromSource, &SettingsModel::fpsFromSourceChanged);
    notify(&Settings::loop, &SettingsModel::loopChanged);
    notify(&Settings::includeAudio, &SettingsModel::includeAudioChanged);
    notify(&Settings::audioTrackIndex, &SettingsModel::audioTrackIndexChanged);
    notify(&Settings::audioChannels, &SettingsModel::audioChannelsChanged);
    notify(&Settings::dither, &SettingsModel::ditherChanged);
    notify(&Settings::qlModeNumber, &SettingsModel::qlModeNumberChanged);
    emit valueChanged();
}

}  // namespace zeb
