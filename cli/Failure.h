#pragma once

#include <string>

#include "cli/ExitCode.h"
#include "platform/base/LocalizableError.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {

/// What a person, in the language in use, and a script are told about an error.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
};

/// Whether `path` is the address of something that is no file of this computer ("http://..."), and no file
/// has it as its name.
bool isRemoteAddress(const std::string& path);

/// Returns what a person reads about an error of `file`: the text names it, whether the error does or not.
std::string textNaming(const std::string& file, const std::exception& error);

/// Describes the exception that is being handled. To be called in a catch block only.
Failure describeCurrentFailure();

/// The same for an error met with `file`, which the text names.
Failure describeFailureOf(const std::string& file);

}  // namespace zeb::cli
