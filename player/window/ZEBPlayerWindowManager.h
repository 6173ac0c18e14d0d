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

/// The player windows: one for each movie. Main thread.
///
/// Windows are told apart by their object names: player windows are called "ZEBPlayerWindow", a converter
/// window made here "ZEBMakerMainWindow"; everything else is some other window of the application's.
class ZEBPlayerWindowManager {
public:
    static constexpr const char* playerWindowName = "ZEBPlayerWindow";
    static constexpr const char* makerWindowName = "ZEBMakerMainWindow";

    struct Services {
        QQmlEngine& engine;
        PlayerServices player;
        UserDefaults& defaults;
        NotificationCenter& notifications;
        /// Makes a converter window, hidden, when there is none to bring forward.
        std::function<QQuickWindow*()> makeMakerWindow;
        PlayerCommands commands = {};
    };

    explicit ZEBPlayerWindowManager(Services services);
    ~ZEBPlayerWindowManager();
    ZEBPlayerWindowManager(const ZEBPlayerWindowManager&) = delete;
    ZEBPlayerWindowManager& operator=(const ZEBPlayerWindowManager&) = delete;

    /// Opens a movie in a window of its own, or brings the window forward that shows it already; that one
    /// opens the file again if it has changed since. With `hideMaker` all windows that are no player windows
    /// go, and are brought back by `showMaker` only.
    void openPlayer(const URL& url, bool hideMaker);
    /// Ends what `hideMaker` has begun: a converter window that is shown from now on stays.
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
    std::shared_ptr<const bool> m_hidesMaker = std::make_shared<const bool>(true);  ///< while it lives
};

}  // namespace zeb
