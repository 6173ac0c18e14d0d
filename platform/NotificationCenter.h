#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/PropertyValue.h"

namespace zeb {

/// A message to whoever in the process listens for its name.
struct Notification {
    std::string name;
    PropertyDictionary userInfo;
};

/// Delivers notifications within the process. Used on the main thread only.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    /// Ends an observation when it is destroyed; may outlive the centre.
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

    /// Calls the observers of `name` in the order in which they began, and returns when the last has
    /// answered. They may post, and begin and end observations: one that begins meanwhile is not called, one
    /// that has ended is not either.
    void post(std::string_view name, PropertyDictionary userInfo = {});

private:
    struct Observer {
        std::string name;
        Handler handler;
    };

    std::vector<std::weak_ptr<const Observer>> m_observers;
};

}  // namespace zeb
