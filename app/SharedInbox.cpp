#include "app/SharedInbox.h"

#include "platform/files/OpenFolder.h"

namespace zeb {

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
