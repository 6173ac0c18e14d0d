#pragma once

#include <string>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Returns the system's own text for an error number (errno). Callable from any thread.
std::string systemErrorDescription(int errorNumber);

/// Returns what a person reads about an error number: a text of the string tables for those that occur with
/// files, disks and processes; the system's own text for the others.
KeyedText systemErrorText(int errorNumber);

}  // namespace zeb
