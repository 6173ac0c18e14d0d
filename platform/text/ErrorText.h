#pragma once

#include <exception>
#include <string>

namespace zeb {

/// Returns what a person reads about `error`, in the language in use (TextLocale.h): the text of a
/// `LocalizableError`, of missing memory and of a system error; `what()` of any other error.
std::string errorText(const std::exception& error);

/// Returns the same for the exception that is being handled. Called in a `catch` block only.
std::string currentErrorText();

}  // namespace zeb
