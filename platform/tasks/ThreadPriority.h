#pragma once

namespace zeb {

/// Lowers the priority of the calling thread below the other threads of the process. Does nothing on systems
/// without this.
void giveWayToOtherThreads() noexcept;

}  // namespace zeb
