#pragma once

#include <QObject>
#include <QStringList>

#include "app/LaunchArguments.h"
#include "app/scenes/Scenes.h"
#include "platform/tasks/MainActor.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "ui/model/AppActionRouter.h"

namespace zeb {

/// Takes what the desktop and other instances ask of the application to where it belongs, and ends it with
/// its last window. Main thread.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// All of it outlives this.
    struct Services {
        ContentViewModel& content;
        Scenes& scenes;
        ZEBPlayerWindowManager& players;
        AppActionRouter& appActions;
        MainActor& mainActor;
    };

    explicit AppDelegate(const Services& services, QObject* parent = nullptr);

    /// The program was started with these arguments, here or in another instance; without requests, to see
    /// the converter.
    void open(const LaunchArguments& arguments);

private:
    /// Whether the converter stays in sight beside the movies that are opened.
    enum class Maker { hidden, shown };

    void applicationOpenURLs(std::vector<URL> urls, Maker maker);
    void showConverter();
    bool eventFilter(QObject* watched, QEvent* event) override;

    Services m_services;
};

}  // namespace zeb
