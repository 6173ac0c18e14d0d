#pragma once

#include <string>

#include "cli/ExitCode.h"

namespace zeb::cli {

/// What a person and a script are told about an error.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
};

/// Describes the exception that is being handled. To be called in a catch block only.
Failure describeCurrentFailure();

}  // namespace zeb::cli
