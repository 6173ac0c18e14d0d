#include "platform/settings/NotificationCenter.h"

namespace zeb {

NotificationCenter::Observation NotificationCenter::observe(std::string_view name, Handler handler) {
    std::erase_if(m_observers, [](const auto& observer) { return observer.expired(); });
    auto observer = std::make_shared<const Observer>(Observer{std::string(name), std::move(handler)});
    m_observers.push_back(observer);
    return Observation(std::move(observer));
}

void NotificationCenter::post(std::string_view name, PropertyDictionary userInfo) {
    const Notification notification{std::string(name), std::move(userInfo)};
    const auto observers = m_observers;
    for (const auto& weakObserver : observers) {
        const auto observer = weakObserver.lock();
        if (observer && observer->name == name) observer->handler(notification);
    }
}

}  // namespace zeb
