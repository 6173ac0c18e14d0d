#include "cli/Failure.h"

#include "conversion/ExportError.h"
#include "format/ZEBConverterError.h"
#include "format/ZEBFormatError.h"
#include "platform/ErrorText.h"
#include "platform/FileHandle.h"
#include "platform/Media.h"

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

/// For the exception that is being handled.
ExitCode currentExitCode() {
    try {
        throw;
    } catch (const ZEBConverterError& error) {
        return exitCodeOf(error);
    } catch (const MediaError& error) {
        return error.code() == MediaError::interrupted ? ExitCode::interrupted : ExitCode::unreadableInput;
    } catch (const ExportError& error) {
        return exitCodeOf(error);
    } catch (const ZEBFormatError&) {
        return ExitCode::unreadableInput;
    } catch (const FileError&) {
        // Inputs are opened by the media layer, whose errors are its own.
        return ExitCode::unwritableOutput;
    } catch (const OutputRefused&) {
        return ExitCode::unwritableOutput;
    } catch (...) {
        return ExitCode::conversionFailed;
    }
}

bool isCannotCreate() {
    try {
        throw;
    } catch (const ZEBConverterError& error) {
        return error.errorCase() == ZEBConverterError::Case::cannotCreateOutput;
    } catch (...) {
        return false;
    }
}

}  // namespace

std::string textNaming(const std::string& file, const std::exception& error) {
    const std::string text = errorText(error);
    return text.starts_with(file + ": ") ? text : file + ": " + text;
}

Failure describeCurrentFailure() {
    const ExitCode exitCode = currentExitCode();
    Failure failure{
        exitCode == ExitCode::interrupted ? localizedText("error_interrupted") : currentErrorText(), exitCode,
        isCannotCreate()};
    // The texts are joined with what became of the output.
    if (failure.text.ends_with('.')) failure.text.pop_back();
    return failure;
}

}  // namespace zeb::cli
