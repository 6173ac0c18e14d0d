#include "conversion/plan/OutputName.h"

#include "conversion/plan/SourceAnalysis.h"
#include "platform/text/PathName.h"
#include "platform/text/TextTrim.h"

namespace zeb {

std::string safeFileName(std::string_view text) {
    std::string name(trimmed(text));
    for (char& character : name) {
        if (std::string_view("\\/:?%*|\"<>").find(character) != std::string_view::npos) character = '_';
    }
    return name;
}

std::string proposedOutputName(std::string_view title, const std::string& inputPath) {
    std::string name = safeFileName(title);
    if (name.empty() || name == "Untitled") name = proposedTitle(inputPath);
    return name + ".zeb";
}

std::string outputBeside(const std::string& inputPath) {
    const std::size_t extension = pathExtension(inputPath).size();
    return extension == 0 ? inputPath + ".zeb" : inputPath.substr(0, inputPath.rfind('.')) + ".zeb";
}

std::string freeOutputBeside(const std::string& inputPath,
                             const std::function<bool(const std::string& path)>& isTaken) {
    const std::string first = outputBeside(inputPath);
    const std::string stem = first.substr(0, first.rfind('.'));
    std::string path = first;
    for (int number = 2; isTaken(path); ++number)
        path = stem + ' ' + std::to_string(number) + ".zeb";
    return path;
}

}  // namespace zeb
