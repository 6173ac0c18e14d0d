#pragma once

#include <string>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Returns the system's own text for an error number (errno). Callable from any thread.
std::string systemErrorDescription(int errorNumber);

/// Returns the text of an error number for the user: a text of the string tables for errors of files, disks
/// and processes; the system's text for the others.
KeyedText systemErrorText(int errorNumber);

}  // namespace zeb
