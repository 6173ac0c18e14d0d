#include "platform/OutputError.h"

#include "platform/LocalizedText.h"

namespace zeb {
namespace {

std::string sentence(OutputError::Case errorCase, const std::string& path, const std::string& folder) {
    using enum OutputError::Case;
    switch (errorCase) {
        case noName:
            return localizedText("error_output_no_name");
        case isInput:
            return localizedText("error_output_is_input_format", {path});
        case isFolder:
            return localizedText("error_output_is_folder_format", {path});
        case notRegular:
            return localizedText("error_output_not_regular_format", {path});
        case exists:
            return localizedText("error_output_exists_format", {path});
        case noFolder:
            return localizedText("error_output_no_folder_format", {path, folder});
        case notAFolder:
            return localizedText("error_output_not_a_folder_format", {path, folder});
        case appeared:
            return localizedText("error_output_appeared_format", {path});
        case replaced:
            return localizedText("error_output_replaced_format", {path});
        case removed:
            break;
    }
    return localizedText("error_output_removed_format", {path});
}

}  // namespace

OutputError::OutputError(Case errorCase, const std::string& path, const std::string& folder)
    : PlatformError("Output", static_cast<int>(errorCase), sentence(errorCase, path, folder)), m_path(path) {}

}  // namespace zeb
