#pragma once

#include <QObject>
#include <QStringList>

#include "app/LaunchArguments.h"
#include "app/scenes/Scenes.h"
#include "platform/tasks/MainActor.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "ui/model/AppActionRouter.h"

namespace zeb {

/// Dispatches requests from the desktop and from other instances, and quits the application with its last
/// window. Main thread.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the delegate.
    struct Services {
        ContentViewModel& content;
        Scenes& scenes;
        ZEBPlayerWindowManager& players;
        AppActionRouter& appActions;
        MainActor& mainActor;
    };

    explicit AppDelegate(const Services& services, QObject* parent = nullptr);

    /// Handles the arguments of a start of the program, in this or another process. Without requests, shows
    /// the converter.
    void open(const LaunchArguments& arguments);

private:
    /// Whether the converter stays visible beside opened movies.
    enum class Maker { hidden, shown };

    void applicationOpenURLs(std::vector<URL> urls, Maker maker);
    void showConverter();
    bool eventFilter(QObject* watched, QEvent* event) override;

    Services m_services;
};

}  // namespace zeb
