#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace zeb {

/// Removes what lies in the folder "SharedInbox" of `container` and was modified more than seven days before
/// `now`; folders with their contents, links as links, hidden entries never. Nothing outside the folder is
/// touched, and the folder itself must not be a link. Failures are silent. Blocks until all is done.
void cleanSharedInbox(const std::optional<std::string>& container, std::chrono::system_clock::time_point now);

}  // namespace zeb
