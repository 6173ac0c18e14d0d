#include "app/scenes/Scenes.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <algorithm>
#include <utility>

#include "platform/desktop/Windows.h"
#include "platform/files/StandardFolders.h"

namespace zeb {
namespace {

QUrl backgroundPicture() {
    const auto path = resourcePath("artwork/QLMode4Background", "png");
    return path ? QUrl::fromLocalFile(QString::fromStdString(*path)) : QUrl();
}

}  // namespace

Scenes::Scenes(const Services& services, QObject* parent)
    : QObject(parent),
      m_services(services),
      m_presetMenu(services.defaults, services.notifications),
      m_presetSettings(services.defaults, services.notifications),
      m_background(backgroundPicture()) {
    ConverterViewModel* converter = services.content.vm();
    connect(converter, &ConverterViewModel::isRunningChanged, this, [this, converter] {
        if (!converter->isRunning()) setAskingToQuit(false);
    });
}

Scenes::~Scenes() {
    for (const QPointer<QQuickWindow>& window : {m_converter, m_settings, m_help})
        delete window.data();
}

QQuickWindow* Scenes::make(const QString& name, QVariantMap properties) {
    properties.insert("scenes", QVariant::fromValue(this));
    QQmlComponent component(&m_services.engine, QUrl("qrc:/qt/qml/ZEBMakerScenes/" + name + ".qml"));
    if (!component.isReady()) qFatal("%s", qPrintable(component.errorString()));
    auto* window = qobject_cast<QQuickWindow*>(component.createWithInitialProperties(properties));
    Q_ASSERT(window);
    placeOnScreen(*window);
    return window;
}

// MARK: Windows

QQuickWindow* Scenes::makeConverterWindow() {
    return converterWindow(false);
}

void Scenes::showConverter() {
    bringForward(*converterWindow(true));
}

void Scenes::chooseVideo() {
    bringForward(*converterWindow(false));
    const ContentViewModel& content = m_services.content;
    const bool isAsking = m_isAskingToQuit || !content.cancelledOutputQuestion().isEmpty() ||
                          !content.replaceQuestion().isEmpty() || !content.misfitQuestion().isEmpty();
    if (!isAsking) content.vm()->chooseInput();
}

/// Returns the converter's window, created if necessary. Only the first window of the process can show the
/// splash.
QQuickWindow* Scenes::converterWindow(bool welcomes) {
    if (!m_converter) {
        const bool isFirst = !std::exchange(m_hadConverter, true);
        m_converter = make("ConverterWindow", {{"content", QVariant::fromValue(&m_services.content)},
                                               {"presetMenu", QVariant::fromValue(&m_presetMenu)},
                                               {"backgroundPicture", m_background},
                                               {"showStartupSplash", welcomes && isFirst}});
        // For the first window this was done at program start, because requests are handled without a window
        // too.
        if (!isFirst) m_services.appear();
    }
    return m_converter;
}

QWindow* Scenes::windowForPanels() const {
    return m_converter && m_converter->isVisible() ? m_converter.data() : nullptr;
}

void Scenes::showSettings() {
    if (!m_settings)
        m_settings = make("SettingsWindow", {{"settings", QVariant::fromValue(&m_presetSettings)}});
    bringForward(*m_settings);
}

void Scenes::showHelp() {
    if (!m_help) m_help = make("HelpWindow", {});
    bringForward(*m_help);
}

void Scenes::forget(QQuickWindow* window) {
    if (window == m_converter) m_converter.clear();
    if (window == m_settings) m_settings.clear();
    if (window == m_help) m_help.clear();
    window->deleteLater();
}

// MARK: Quitting

void Scenes::quit() {
    if (m_services.content.vm()->isRunning()) {
        showConverter();
        setAskingToQuit(true);
    } else {
        QCoreApplication::quit();
    }
}

void Scenes::lastWindowClosed() {
    // A file panel is not counted as a window by Qt, but is visible to the user.
    const bool isPanelOpen = std::ranges::any_of(QGuiApplication::topLevelWindows(),
                                                 [](const QWindow* window) { return window->isVisible(); });
    if (m_services.content.vm()->isRunning() || isPanelOpen) {
        showConverter();
    } else {
        QCoreApplication::quit();
    }
}

bool Scenes::mayCloseConverter() {
    ConverterViewModel& converter = *m_services.content.vm();
    if (converter.isWaiting()) converter.cancel();
    if (!converter.isRunning()) return true;
    setAskingToQuit(true);
    return false;
}

void Scenes::quitAnyway() {
    setAskingToQuit(false);
    // The run's job ends before the services are destroyed.
    m_services.content.vm()->cancel();
    QCoreApplication::quit();
}

void Scenes::goOn() {
    setAskingToQuit(false);
}

void Scenes::setAskingToQuit(bool isAsking) {
    if (isAsking == m_isAskingToQuit) return;
    m_isAskingToQuit = isAsking;
    emit isAskingToQuitChanged();
}

}  // namespace zeb
