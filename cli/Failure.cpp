#include "cli/Failure.h"

#include <new>

#include "conversion/ExportError.h"
#include "format/ZEBConverterError.h"
#include "format/ZEBFormatError.h"
#include "platform/FileHandle.h"
#include "platform/LocalizedText.h"
#include "platform/Media.h"
#include "platform/OutputError.h"

namespace zeb::cli {
namespace {

Failure describe(const ZEBConverterError& error) {
    switch (error.errorCase()) {
        case ZEBConverterError::Case::cancelled:
            return {"interrupted", ExitCode::interrupted};
        case ZEBConverterError::Case::noVideoTrack:
            return {error.what(), ExitCode::unreadableInput};
        case ZEBConverterError::Case::cannotCreateOutput:
            return {error.what(), ExitCode::unwritableOutput};
    }
    return {error.what(), ExitCode::conversionFailed};
}

Failure describe(const MediaError& error) {
    if (error.code() == MediaError::interrupted) return {"interrupted", ExitCode::interrupted};
    return {error.what(), ExitCode::unreadableInput};
}

Failure describe(const ExportError& error) {
    switch (error.code()) {
        case ExportError::outsideMovie:
            return {error.what(), ExitCode::wrongUsage};
        case ExportError::tooLarge:
            return {error.what(), ExitCode::conversionFailed};
        default:
            return {error.what(), ExitCode::unreadableInput};
    }
}

Failure describe(const OutputError& error) {
    if (error.errorCase() != OutputError::Case::exists) return {error.what(), ExitCode::unwritableOutput};
    return {localizedText("error_output_exists_force_format", {error.path()}), ExitCode::unwritableOutput};
}

Failure describeAny() {
    try {
        throw;
    } catch (const ZEBConverterError& error) {
        return describe(error);
    } catch (const MediaError& error) {
        return describe(error);
    } catch (const ExportError& error) {
        return describe(error);
    } catch (const ZEBFormatError& error) {
        return {error.what(), ExitCode::unreadableInput};
    } catch (const FileError& error) {
        // Inputs are opened by the media layer, whose errors are its own.
        return {error.what(), ExitCode::unwritableOutput};
    } catch (const OutputError& error) {
        return describe(error);
    } catch (const std::bad_alloc&) {
        return {"out of memory", ExitCode::conversionFailed};
    } catch (const std::exception& error) {
        return {error.what(), ExitCode::conversionFailed};
    } catch (...) {
        return {"unknown error", ExitCode::conversionFailed};
    }
}

}  // namespace

Failure describeCurrentFailure() {
    Failure failure = describeAny();
    // The texts are joined with what became of the output.
    if (failure.text.ends_with('.')) failure.text.pop_back();
    return failure;
}

}  // namespace zeb::cli
