#pragma once

#include <QObject>
#include <QStringList>

#include "app/scenes/Scenes.h"
#include "platform/MainActor.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "ui/AppActionRouter.h"

namespace zeb {

/// Takes what the desktop and other instances ask of the application to where it belongs, and ends it with
/// its last window. Main thread.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// Whether the converter stays in sight beside the movies that are opened.
    enum class Maker { hidden, shown };

    /// All of it outlives this.
    struct Services {
        Scenes& scenes;
        ContentViewModel& content;
        ZEBPlayerWindowManager& players;
        AppActionRouter& appActions;
        MainActor& mainActor;
    };

    explicit AppDelegate(const Services& services, QObject* parent = nullptr);

    /// The program was started with these URLs, here or in another instance; with none, to see the converter.
    void open(const QStringList& requests, Maker maker);

private:
    void applicationOpenURLs(std::vector<URL> urls, Maker maker);
    bool eventFilter(QObject* watched, QEvent* event) override;

    Services m_services;
};

}  // namespace zeb
