#include "platform/files/OutputError.h"

#include <utility>

#include "platform/text/LocalizedText.h"

namespace zeb {
namespace {

KeyedText textOf(OutputError::Case errorCase, const std::string& path, const std::string& folder) {
    using enum OutputError::Case;
    const auto because = [&path](KeyedText reason) {
        return KeyedText{"error_file_format", {path, std::move(reason)}};
    };
    switch (errorCase) {
        case noName:
            return {"error_output_no_name"};
        case isInput:
            return because({"error_output_is_input"});
        case isFolder:
            return because({"error_system_folder"});
        case notRegular:
            return because({"error_not_ordinary_file"});
        case exists:
            return because({"error_output_exists"});
        case noFolder:
            return because({"error_output_missing_folder_format", {folder}});
        case notAFolder:
            return because({"error_output_no_folder_format", {folder}});
        case appeared:
            return because({"error_output_appeared"});
        case replaced:
            return because({"error_output_replaced"});
        case removed:
            break;
    }
    return because({"error_output_removed"});
}

}  // namespace

OutputError::OutputError(Case errorCase, const std::string& path, const std::string& folder)
    : OutputError(errorCase, path, textOf(errorCase, path, folder)) {}

OutputError::OutputError(Case errorCase, const std::string& path, const KeyedText& text)
    : PlatformError("Output", static_cast<int>(errorCase), englishText(text), text), m_path(path) {}

}  // namespace zeb
