#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace zeb {

/// Removes the entries of the folder "SharedInbox" in `container` that were modified more than seven days
/// before `now`: folders with their contents, links without following them, hidden entries never. Does
/// nothing if the folder itself is a link. Ignores errors. Blocks until done.
void cleanSharedInbox(const std::optional<std::string>& container, std::chrono::system_clock::time_point now);

}  // namespace zeb
