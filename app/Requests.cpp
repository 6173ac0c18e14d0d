#include "app/Requests.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files/OpenFolder.h"
#include "platform/text/URL.h"

namespace zeb {
namespace {

AppAction actionByExtension(URL target) {
    if (target.hasExtension("zeb")) return PlayAction{std::move(target), true};
    return EncodeAction{std::move(target)};
}

std::optional<std::string> firstPiece(std::string_view path) {
    const std::size_t start = path.find_first_not_of('/');
    if (start == std::string_view::npos) return std::nullopt;
    path.remove_prefix(start);
    return std::string(path.substr(0, path.find('/')));
}

std::optional<URL> targetOf(const URL& url) {
    const auto items = url.queryItems();
    if (!items) return std::nullopt;
    const auto item = std::ranges::find(*items, "url", &URL::QueryItem::name);
    if (item == items->end() || !item->value) return std::nullopt;
    return URL::parse(*item->value);
}

}  // namespace

std::optional<AppAction> parseAppAction(const std::string& text) {
    auto url = URL::parse(text);
    if (!url) return std::nullopt;
    if (url->isFileURL()) return actionByExtension(*std::move(url));
    if (url->components().scheme != requestScheme) return std::nullopt;
    // An empty host is an unknown verb: for "zebmaker:///play?url=..." the target decides.
    std::optional<std::string> verb = url->host();
    if (!verb) verb = firstPiece(url->path());
    if (!verb) return std::nullopt;
    auto target = targetOf(*url);
    if (!target) return std::nullopt;
    if (*verb == "play") return PlayAction{*std::move(target), true};
    if (*verb == "encode") return EncodeAction{*std::move(target)};
    return actionByExtension(*std::move(target));
}

void routeOpenedURLs(const std::vector<URL>& urls, MainActor& mainActor, const OpenPlayer& openPlayer,
                     AppActionRouter& router, const ActivateApplication& activate) {
    for (const URL& url : urls) {
        if (url.isLocalFile() && url.hasExtension("zeb")) {
            mainActor.post([openPlayer, url] { openPlayer(url, true); });
        } else {
            mainActor.post([&router, activate, url] {
                router.post(EncodeAction{url});
                activate();
            });
        }
    }
}

void cleanSharedInbox(const std::optional<std::string>& container,
                      std::chrono::system_clock::time_point now) {
    if (!container) return;
    const auto inbox = OpenFolder::open(*container + "/SharedInbox");
    if (!inbox) return;
    const auto names = inbox->names();
    if (!names) return;
    const auto cutOff = now - std::chrono::seconds(604'800);
    for (const std::string& name : *names) {
        if (name.starts_with('.')) continue;
        const auto date = inbox->modificationDate(name).value_or(OpenFolder::Date::min());
        if (date < cutOff) inbox->remove(name);
    }
}

}  // namespace zeb
