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

/// The application's windows (converter, settings, help), at most one of each, created on demand and
/// destroyed when closed, and the handling of quitting. Main thread.
class Scenes final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one")
    Q_PROPERTY(bool isAskingToQuit READ isAskingToQuit NOTIFY isAskingToQuitChanged)

public:
    /// All of them outlive the scenes.
    struct Services {
        QQmlEngine& engine;
        ContentViewModel& content;
        UserDefaults& defaults;
        NotificationCenter& notifications;
        /// Called when the content of a converter window is created, for each window after the first.
        std::function<void()> appear;
    };

    explicit Scenes(const Services& services, QObject* parent = nullptr);
    ~Scenes() override;

    /// Brings the converter's window forward. The first window of the process begins with the splash.
    void showConverter();
    /// Shows the open panel in the converter's window, unless a question is open there.
    void chooseVideo();
    /// Returns the converter's window, hidden if it is new, without the splash.
    QQuickWindow* makeConverterWindow();
    /// Returns the parent window for panels: the converter's window while it is visible.
    QWindow* windowForPanels() const;

    Q_INVOKABLE void showSettings();
    Q_INVOKABLE void showHelp();
    /// Destroys a closed window.
    Q_INVOKABLE void forget(QQuickWindow* window);

    /// Quits the application. While a conversion runs, asks first in the converter's window.
    Q_INVOKABLE void quit();
    /// Called when no window is visible any more: quits the application. While a conversion runs or a file
    /// panel is open, shows the converter again instead, without a question.
    void lastWindowClosed();
    /// Returns whether the converter's window may be closed. Closing ends its conversion, so asks the same
    /// question.
    Q_INVOKABLE bool mayCloseConverter();
    /// True while the question is open. The question is closed when the run ends.
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
