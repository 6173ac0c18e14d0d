#pragma once

#include <QObject>
#include <QString>

#include "conversion/plan/Settings.h"

namespace zeb {

/// The conversion settings as a window edits them: each field notifies when it changes. Main thread.
class SettingsModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(int width READ width WRITE setWidth NOTIFY widthChanged)
    Q_PROPERTY(int height READ height WRITE setHeight NOTIFY heightChanged)
    Q_PROPERTY(bool preserveAspect READ preserveAspect WRITE setPreserveAspect NOTIFY preserveAspectChanged)
    Q_PROPERTY(int fps READ fps WRITE setFps NOTIFY fpsChanged)
    Q_PROPERTY(bool fpsFromSource READ fpsFromSource WRITE setFpsFromSource NOTIFY fpsFromSourceChanged)
    Q_PROPERTY(bool loop READ loop WRITE setLoop NOTIFY loopChanged)
    Q_PROPERTY(bool includeAudio READ includeAudio WRITE setIncludeAudio NOTIFY includeAudioChanged)
    Q_PROPERTY(
        int audioTrackIndex READ audioTrackIndex WRITE setAudioTrackIndex NOTIFY audioTrackIndexChanged)
    Q_PROPERTY(int audioChannels READ audioChannels WRITE setAudioChannels NOTIFY audioChannelsChanged)
    Q_PROPERTY(bool dither READ dither WRITE setDither NOTIFY ditherChanged)
    Q_PROPERTY(int qlModeNumber READ qlModeNumber WRITE setQlModeNumber NOTIFY qlModeNumberChanged)

public:
    using QObject::QObject;

    const Settings& value() const noexcept { return m_value; }
    /// Sets all fields before the first notification.
    void setValue(const Settings& value);

    QString title() const { return QString::fromStdString(m_value.title); }
    int width() const { return m_value.width; }
    int height() const { return m_value.height; }
    bool preserveAspect() const { return m_value.preserveAspect; }
    int fps() const { return m_value.fps; }
    bool fpsFromSource() const { return m_value.fpsFromSource; }
    bool loop() const { return m_value.loop; }
    bool includeAudio() const { return m_value.includeAudio; }
    int audioTrackIndex() const { return m_value.audioTrackIndex; }
    int audioChannels() const { return m_value.audioChannels; }
    bool dither() const { return m_value.dither; }
    int qlModeNumber() const { return m_value.qlModeNumber; }

    void setTitle(const QString& title) { set(&Settings::title, title.toStdString()); }
    void setWidth(int width) { set(&Settings::width, width); }
    void setHeight(int height) { set(&Settings::height, height); }
    void setPreserveAspect(bool preserveAspect) { set(&Settings::preserveAspect, preserveAspect); }
    void setFps(int fps) { set(&Settings::fps, fps); }
    void setFpsFromSource(bool fpsFromSource) { set(&Settings::fpsFromSource, fpsFromSource); }
    void setLoop(bool loop) { set(&Settings::loop, loop); }
    void setIncludeAudio(bool includeAudio) { set(&Settings::includeAudio, includeAudio); }
    void setAudioTrackIndex(int index) { set(&Settings::audioTrackIndex, index); }
    void setAudioChannels(int channels) { set(&Settings::audioChannels, channels); }
    void setDither(bool dither) { set(&Settings::dither, dither); }
    void setQlModeNumber(int number) { set(&Settings::qlModeNumber, number); }

signals:
    void titleChanged();
    void widthChanged();
    void heightChanged();
    void preserveAspectChanged();
    void fpsChanged();
    void fpsFromSourceChanged();
    void loopChanged();
    void includeAudioChanged();
    void audioTrackIndexChanged();
    void audioChannelsChanged();
    void ditherChanged();
    void qlModeNumberChanged();
    /// After the notifications of the fields that have changed.
    void valueChanged();

private:
    template <typename T>
    void set(T Settings::*field, T value) {
        Settings changed = m_value;
        changed.*field = std::move(value);
        setValue(changed);
    }

    Settings m_value;
};

}  // namespace zeb
