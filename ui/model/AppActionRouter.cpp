#include "ui/model/AppActionRouter.h"

#include <QUuid>
#include <string_view>
#include <utility>

namespace zeb {
namespace {

constexpr std::string_view requestChanged = "request";

}  // namespace

AppActionRouter& AppActionRouter::shared() {
    static AppActionRouter router;
    return router;
}

void AppActionRouter::post(AppAction action) {
    m_request = AppActionRequest{QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(),
                                 std::move(action)};
    m_unannounced.push_back(*m_request);
    // An observer may post, or run an event loop for a question. Queue the new request, so that the remaining
    // observers receive the older one first.
    if (m_unannounced.size() > 1) return;
    while (!m_unannounced.empty()) {
        m_changes.post(requestChanged);
        m_unannounced.pop_front();
    }
}

AppActionRouter::Observation AppActionRouter::observe(Observer observer) {
    return m_changes.observe(requestChanged, [this, observer = std::move(observer)](const Notification&) {
        observer(m_unannounced.front());
    });
}

}  // namespace zeb
