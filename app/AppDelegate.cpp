#include "app/AppDelegate.h"

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <algorithm>
#include <iterator>
#include <variant>

#include "app/Requests.h"

namespace zeb {

AppDelegate::AppDelegate(const Services& services, QObject* parent) : QObject(parent), m_services(services) {
    // Do not quit with the last window: a conversion may still run, and quitting has to ask.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    connect(qGuiApp, &QGuiApplication::lastWindowClosed, this,
            [this] { m_services.scenes.lastWindowClosed(); });
    qApp->installEventFilter(this);
}

void AppDelegate::open(const LaunchArguments& arguments) {
    const Maker maker = arguments.showMaker ? Maker::shown : Maker::hidden;
    std::vector<URL> files;
    bool isForConverter = arguments.requests.isEmpty() || arguments.showMaker;
    bool isForPlayer = false;
    for (const QString& request : arguments.requests) {
        const std::string text = request.toStdString();
        const auto url = URL::parse(text);
        if (url && url->components().scheme && url->components().scheme != requestScheme) {
            files.push_back(*url);
        } else if (auto action = parseAppAction(text)) {
            auto* play = std::get_if<PlayAction>(&*action);
            isForConverter |= play == nullptr;
            isForPlayer |= play != nullptr;
            if (play) play->hideMaker &= maker == Maker::hidden;
            m_services.appActions.post(*action);
        }
    }
    applicationOpenURLs(files, maker);
    // Show the converter for unknown requests too, so that the start is visible.
    if (isForConverter || (files.empty() && !isForPlayer)) showConverter();
}

void AppDelegate::applicationOpenURLs(std::vector<URL> urls, Maker maker) {
    // The converter's window shows the error about a missing movie, so it stays visible in that case.
    const auto missing = std::erase_if(urls, [this](const URL& url) {
        return url.hasExtension("zeb") && !m_services.content.findsMovie(url);
    });
    if (missing > 0) maker = Maker::shown;
    routeOpenedURLs(
        urls, m_services.mainActor,
        [this, maker](const URL& url, bool hideMaker) {
            m_services.players.openPlayer(url, hideMaker && maker == Maker::hidden);
        },
        m_services.appActions, [this] { showConverter(); });
    std::vector<URL> videos;
    std::ranges::copy_if(urls, std::back_inserter(videos),
                         [](const URL& url) { return url.isLocalFile() && !url.hasExtension("zeb"); });
    if (videos.size() < 2) return;
    m_services.mainActor.post(
        [&content = m_services.content, taken = videos.back()] { content.sayOneVideoIsTaken(taken); });
}

void AppDelegate::showConverter() {
    m_services.players.stopHidingMaker();
    m_services.scenes.showConverter();
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::FileOpen) return QObject::eventFilter(watched, event);
    open({.requests = {static_cast<QFileOpenEvent*>(event)->url().toEncoded()}});
    return true;
}

}  // namespace zeb
