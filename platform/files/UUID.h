#pragma once

#include <string>

namespace zeb {

/// A new random UUID (RFC 4122, version 4) in its textual form, upper case. Callable from any thread.
std::string makeUUID();

}  // namespace zeb
