#include "platform/text/ErrorText.h"

#include <filesystem>
#include <new>
#include <system_error>

#include "platform/base/Error.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/SystemErrorText.h"

namespace zeb {
namespace {

bool isErrorNumber(const std::error_code& code) {
    return code.category() == std::generic_category() || code.category() == std::system_category();
}

}  // namespace

std::string errorText(const std::exception& error) {
    if (const auto* localizable = dynamic_cast<const LocalizableError*>(&error))
        return localizedText(localizable->text());
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return localizedText("error_out_of_memory");
    const auto* system = dynamic_cast<const std::system_error*>(&error);
    if (system == nullptr || !isErrorNumber(system->code())) return error.what();
    const KeyedText reason = systemErrorText(system->code().value());
    if (const auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return localizedText("error_file_format", {file->path1().string(), reason});
    return localizedText(reason);
}

std::string currentErrorText() {
    try {
        throw;
    } catch (const std::exception& error) {
        return errorText(error);
    } catch (...) {
        return localizedText("error_unknown");
    }
}

}  // namespace zeb
