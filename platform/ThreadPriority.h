#pragma once

namespace zeb {

/// From now on the calling thread gives way to the others of its process when they want the processor. Does
/// nothing where the system does not offer that.
void giveWayToOtherThreads() noexcept;

}  // namespace zeb
