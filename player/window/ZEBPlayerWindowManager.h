#pragma once

#include <QPointer>
#include <QQuickWindow>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/URL.h"
#include "player/ZEBPlayerModel.h"
#include "player/window/PlayerSheetModel.h"

class QQmlEngine;

namespace zeb {

/// The player windows, one per movie. Main thread.
///
/// Windows are identified by object name: player windows are "ZEBPlayerWindow", a converter window made here
/// is "ZEBMakerMainWindow". All others are other windows of the application.
class ZEBPlayerWindowManager {
public:
    static constexpr const char* playerWindowName = "ZEBPlayerWindow";
    static constexpr const char* makerWindowName = "ZEBMakerMainWindow";

    struct Services {
        QQmlEngine& engine;
        PlayerServices player;
        UserDefaults& defaults;
        NotificationCenter& notifications;
        /// Makes a hidden converter window if none exists.
        std::function<QQuickWindow*()> makeMakerWindow;
        PlayerCommands commands = {};
    };

    explicit ZEBPlayerWindowManager(Services services);
    ~ZEBPlayerWindowManager();
    ZEBPlayerWindowManager(const ZEBPlayerWindowManager&) = delete;
    ZEBPlayerWindowManager& operator=(const ZEBPlayerWindowManager&) = delete;

    /// Opens a movie in a new window, or brings forward the window that already shows it, which reloads the
    /// file if it has changed. With `hideMaker`, hides all windows except player windows until `showMaker` is
    /// called.
    void openPlayer(const URL& url, bool hideMaker);
    /// Ends the effect of `hideMaker`: converter windows shown from now on stay visible.
    void stopHidingMaker();
    /// Brings a converter window forward.
    void showMaker();

    std::size_t windowCount() const { return m_windows.size(); }

private:
    struct Player {
        QPointer<QQuickWindow> window;
        QPointer<PlayerSheetModel> sheet;
    };

    QPoint freePlace(const QWindow& window) const;
    void closeWindow(const std::string& key);
    void hideMakerWindows(QQuickWindow* kept);
    void orderOutMakerWindows(const QWindow* kept);

    Services m_services;
    std::map<std::string, Player> m_windows;  ///< by the movie's standardised URL
    QPointer<QQuickWindow> m_makerWindow;
    std::shared_ptr<const bool> m_hidesMaker = std::make_shared<const bool>(true);  ///< reset to stop
};

}  // namespace zeb
