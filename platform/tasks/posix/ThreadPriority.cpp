#include "platform/tasks/ThreadPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace zeb {

void giveWayToOtherThreads() noexcept {
#ifdef __linux__
    // On Linux a nice value belongs to the thread, not to the process.
    constexpr int niceness = 5;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceness);
#endif
}

}  // namespace zeb
