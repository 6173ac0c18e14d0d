#pragma once

#include "platform/tasks/Clock.h"

namespace zeb {

/// The clock of the system.
class SystemClock final : public Clock {
public:
    Instant now() const override;
    bool sleepUntil(Instant deadline, const std::stop_token& token) const override;
    Date date() const override;
};

}  // namespace zeb
