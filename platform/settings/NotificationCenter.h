#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/settings/PropertyValue.h"

namespace zeb {

/// A message to all observers of its name in the process.
struct Notification {
    std::string name;
    PropertyDictionary userInfo;
};

/// Delivers notifications within the process. Used on the main thread only.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    /// Ends the observation when it is destroyed. May outlive the centre.
    class Observation {
    public:
        Observation() = default;

    private:
        friend class NotificationCenter;
        explicit Observation(std::shared_ptr<const void> observer) : m_observer(std::move(observer)) {}

        std::shared_ptr<const void> m_observer;
    };

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// Calls `handler` for every notification called `name` until the observation is destroyed.
    [[nodiscard]] Observation observe(std::string_view name, Handler handler);

    /// Calls the observers of `name` in the order of registration, and returns after the last call. Observers
    /// may post, and may begin and end observations: an observation that begins or ends during the call is
    /// not called.
    void post(std::string_view name, PropertyDictionary userInfo = {});

private:
    struct Observer {
        std::string name;
        Handler handler;
    };

    std::vector<std::weak_ptr<const Observer>> m_observers;
};

}  // namespace zeb
