#include "cli/Failure.h"

#include "conversion/export/ExportError.h"
#include "conversion/plan/SettingsError.h"
#include "format/ZEBErrors.h"
#include "media/Media.h"
#include "platform/files/FileHandle.h"
#include "platform/files/FileManager.h"
#include "platform/files/OutputError.h"
#include "platform/text/ErrorText.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {
namespace {

ExitCode exitCodeOf(const ZEBConverterError& error) {
    switch (error.errorCase()) {
        case ZEBConverterError::Case::cancelled:
            return ExitCode::interrupted;
        case ZEBConverterError::Case::noVideoTrack:
            return ExitCode::unreadableInput;
        case ZEBConverterError::Case::cannotCreateOutput:
            return ExitCode::unwritableOutput;
    }
    return ExitCode::conversionFailed;
}

ExitCode exitCodeOf(const ExportError& error) {
    switch (error.code()) {
        case ExportError::outsideMovie:
            return ExitCode::wrongUsage;
        case ExportError::tooLarge:
            return ExitCode::conversionFailed;
        default:
            return ExitCode::unreadableInput;
    }
}

/// Returns the exit code for the exception being handled.
ExitCode currentExitCode() {
    try {
        throw;
    } catch (const ZEBConverterError& error) {
        return exitCodeOf(error);
    } catch (const MediaError& error) {
        return error.code() == MediaError::interrupted ? ExitCode::interrupted : ExitCode::unreadableInput;
    } catch (const ExportError& error) {
        return exitCodeOf(error);
    } catch (const SettingsError&) {
        return ExitCode::wrongUsage;
    } catch (const ZEBFormatError&) {
        return ExitCode::unreadableInput;
    } catch (const FileError&) {
        // Only for outputs: the media layer opens inputs and does not throw `FileError`.
        return ExitCode::unwritableOutput;
    } catch (const OutputError&) {
        return ExitCode::unwritableOutput;
    } catch (...) {
        return ExitCode::conversionFailed;
    }
}

/// Returns the sentence about the exception being handled, with an option that would help.
std::string currentText(ExitCode exitCode) {
    if (exitCode == ExitCode::interrupted) return localizedText("error_interrupted");
    try {
        throw;
    } catch (const OutputError& error) {
        if (error.errorCase() != OutputError::Case::exists) return errorText(error);
        return localizedText(
            KeyedText{"error_file_format", {error.path(), KeyedText{"error_refused_exists"}}});
    } catch (...) {
        return currentErrorText();
    }
}

std::string naming(const std::string& file, const std::string& text) {
    return text.starts_with(file + ": ") ? text : file + ": " + text;
}

}  // namespace

bool isRemoteAddress(const std::string& path) {
    return path.find("://") != std::string::npos && !files::kindOf(path);
}

std::string textNaming(const std::string& file, const std::exception& error) {
    return naming(file, isRemoteAddress(file) ? localizedText("error_not_local") : errorText(error));
}

Failure describeCurrentFailure() {
    const ExitCode exitCode = currentExitCode();
    Failure failure{currentText(exitCode), exitCode};
    // Callers append the text about the state of the output.
    if (failure.text.ends_with('.')) failure.text.pop_back();
    return failure;
}

Failure describeFailureOf(const std::string& file) {
    Failure failure = describeCurrentFailure();
    failure.text = naming(file, isRemoteAddress(file) ? localizedText("error_not_local") : failure.text);
    return failure;
}

}  // namespace zeb::cli
