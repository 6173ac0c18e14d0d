#include "app/OpenedURLs.h"

#include "ui/model/MovieName.h"

namespace zeb {

void routeOpenedURLs(const std::vector<URL>& urls, MainActor& mainActor, const OpenPlayer& openPlayer,
                     AppActionRouter& router, const ActivateApplication& activate) {
    for (const URL& url : urls) {
        if (url.isLocalFile() && namesMovie(url)) {
            mainActor.post([openPlayer, url] { openPlayer(url, true); });
        } else {
            mainActor.post([&router, activate, url] {
                router.post(EncodeAction{url});
                activate();
            });
        }
    }
}

}  // namespace zeb
