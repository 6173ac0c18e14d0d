#pragma once

#include <string>

#include "cli/ExitCode.h"
#include "platform/LocalizableError.h"
#include "platform/LocalizedText.h"

namespace zeb::cli {

/// An output that is not touched. The text names it.
class OutputRefused : public LocalizableError {
public:
    explicit OutputRefused(const KeyedText& text) : LocalizableError(englishText(text), text) {}

    /// An output that stands in the way, for a reason.
    static OutputRefused because(const std::string& path, const KeyedText& reason) {
        return OutputRefused({"error_file_format", {path, reason}});
    }
};

/// What a person, in the language in use, and a script are told about an error.
struct Failure {
    std::string text;  ///< without a full stop
    ExitCode exitCode;
    bool madeNoOutput = false;  ///< the output could not be created: what stands there is someone else's
};

/// Returns what a person reads about an error of `file`: the text names it, whether the error does or not.
std::string textNaming(const std::string& file, const std::exception& error);

/// Describes the exception that is being handled. To be called in a catch block only.
Failure describeCurrentFailure();

}  // namespace zeb::cli
