#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "platform/settings/NotificationCenter.h"
#include "ui/model/AppAction.h"

namespace zeb {

/// Delivers requests from outside to the window that handles them. Main thread only, except `shared`.
class AppActionRouter {
public:
    using Observation = NotificationCenter::Observation;
    /// Must not throw.
    using Observer = std::function<void(const AppActionRequest&)>;

    /// Returns the router of the process, created on first use. Callable from any thread.
    static AppActionRouter& shared();

    AppActionRouter() = default;
    AppActionRouter(const AppActionRouter&) = delete;
    AppActionRouter& operator=(const AppActionRouter&) = delete;

    /// Makes `action` the current request with a new id and notifies the observers. An observer may post:
    /// every observer then receives that request after this one, before the outer `post` returns.
    void post(AppAction action);

    /// The latest request, never cleared. Empty before the first.
    const std::optional<AppActionRequest>& request() const noexcept { return m_request; }

    /// Calls `observer` with every later request, until the observation is destroyed.
    [[nodiscard]] Observation observe(Observer observer);

private:
    std::optional<AppActionRequest> m_request;
    std::deque<AppActionRequest> m_unannounced;
    NotificationCenter m_changes;
};

}  // namespace zeb
