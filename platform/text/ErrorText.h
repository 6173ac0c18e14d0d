#pragma once

#include <exception>
#include <string>

namespace zeb {

/// Returns the text of `error` for the user, in the current language (LocalizedText.h): the text of a
/// `LocalizableError`, of a failed allocation and of a system error; `what()` of any other error.
std::string errorText(const std::exception& error);

/// Returns the same for the exception that is being handled. Called in a `catch` block only.
std::string currentErrorText();

}  // namespace zeb
