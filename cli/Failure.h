#pragma once

#include <stdexcept>
#include <string>

#include "cli/ExitCode.h"

namespace zeb::cli {

/// An output that is not touched. `what()` is the text that a person sees.
class OutputRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a person and a script are told about an error.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
    bool madeNoOutput = false;  ///< the output could not be created: what stands there is someone else's
};

/// Describes the exception that is being handled. To be called in a catch block only.
Failure describeCurrentFailure();

}  // namespace zeb::cli
