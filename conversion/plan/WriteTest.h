#pragma once

#include <string>

namespace zeb {

/// Whether a file can be made in `folder`: makes an empty one, called ".zebmaker-write-test-" and a UUID, and
/// removes it again.
bool writeTest(const std::string& folder);

}  // namespace zeb
