#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <functional>

#include "app/scenes/PresetMenuModel.h"
#include "ui/model/ContentViewModel.h"
#include "ui/presets/PresetSettingsModel.h"

class QQmlEngine;

namespace zeb {

/// The application's own windows: the converter, the settings, the help; at most one of each, made when it is
/// asked for and gone when it is closed. And how the application ends. Main thread.
class Scenes final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one")
    Q_PROPERTY(bool isAskingToQuit READ isAskingToQuit NOTIFY isAskingToQuitChanged)

public:
    /// All of it outlives this.
    struct Services {
        QQmlEngine& engine;
        ContentViewModel& content;
        UserDefaults& defaults;
        NotificationCenter& notifications;
        /// What is done when the converter's content comes into being. Called for each window after the
        /// first.
        std::function<void()> appear;
    };

    explicit Scenes(const Services& services, QObject* parent = nullptr);
    ~Scenes() override;

    /// The converter's window, brought forward. The first one of the process begins with the welcome picture.
    void showConverter();
    /// Asks for a video in the converter's window, unless a question is open there: that comes first.
    void chooseVideo();
    /// The converter's window, hidden if it is new, without the welcome picture.
    QQuickWindow* makeConverterWindow();
    /// The window that panels belong to: the converter's while it is in sight.
    QWindow* windowForPanels() const;

    Q_INVOKABLE void showSettings();
    Q_INVOKABLE void showHelp();
    /// A window was closed: it goes.
    Q_INVOKABLE void forget(QQuickWindow* window);

    /// Ends the application; asks first, in the converter's window, while a conversion runs.
    Q_INVOKABLE void quit();
    /// No window is in sight any more: ends the application. While a conversion runs or a file panel is open,
    /// the hidden converter comes back instead, and nothing is asked.
    void lastWindowClosed();
    /// Closing the converter's window ends its conversion: the same question.
    Q_INVOKABLE bool mayCloseConverter();
    /// True while the question is open; it goes when the run ends.
    bool isAskingToQuit() const { return m_isAskingToQuit; }
    // The answers.
    Q_INVOKABLE void quitAnyway();
    Q_INVOKABLE void goOn();

signals:
    void isAskingToQuitChanged();

private:
    QQuickWindow* converterWindow(bool welcomes);
    QQuickWindow* make(const QString& name, QVariantMap properties);
    void setAskingToQuit(bool isAsking);

    Services m_services;
    PresetMenuModel m_presetMenu;
    PresetSettingsModel m_presetSettings;
    QUrl m_background;
    bool m_hadConverter = false;
    bool m_isAskingToQuit = false;
    QPointer<QQuickWindow> m_converter;
    QPointer<QQuickWindow> m_settings;
    QPointer<QQuickWindow> m_help;
};

}  // namespace zeb
