#include "conversion/plan/OutputName.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <random>

#include "conversion/plan/SourceAnalysis.h"
#include "platform/files/FileHandle.h"
#include "platform/files/FileManager.h"
#include "platform/text/PathName.h"
#include "platform/text/UTF8.h"

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

namespace {

/// Returns the length of the number placeholder of `text` at `start`: "%", up to two digits, "d". Returns 0
/// if there is none.
std::size_t placeLength(const std::string& text, std::size_t start) {
    constexpr std::size_t mostDigits = 2;
    std::size_t end = start + 1;
    while (end < text.size() && end - start <= mostDigits && text[end] >= '0' && text[end] <= '9')
        ++end;
    return end < text.size() && text[end] == 'd' ? end + 1 - start : 0;
}

}  // namespace

std::optional<NumberedName> NumberedName::parse(const std::string& pattern) {
    std::optional<NumberedName> name;
    for (std::size_t start = pattern.find('%'); start != std::string::npos;
         start = pattern.find('%', start + 1)) {
        const std::size_t length = placeLength(pattern, start);
        if (length == 0) continue;
        if (name) return std::nullopt;
        name.emplace();
        name->m_before = pattern.substr(0, start);
        name->m_after = pattern.substr(start + length);
        for (std::size_t i = start + 1; i < start + length - 1; ++i)
            name->m_digits = (i == start + 1 ? 0 : name->m_digits * 10) + (pattern[i] - '0');
    }
    return name;
}

std::string NumberedName::with(std::int64_t number) const {
    std::string digits = std::to_string(number);
    const auto wanted = static_cast<std::size_t>(m_digits);
    if (digits.size() < wanted) digits.insert(0, wanted - digits.size(), '0');
    return m_before + digits + m_after;
}

namespace {

/// Returns a random UUID (RFC 9562, version 4) in upper case.
std::string makeUUID() {
    std::random_device random;
    std::array<std::uint8_t, 16> bytes{};
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // the RFC's variant

    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
        constexpr const char* digits = "0123456789ABCDEF";
        text += {digits[bytes[index] >> 4], digits[bytes[index] & 15]};
    }
    return text;
}

}  // namespace

bool writeTest(const std::string& folder) {
    const std::string path =
        (std::filesystem::path(folder) / (".zebmaker-write-test-" + makeUUID())).string();
    try {
        createForWriting(path)->close();
    } catch (const FileError&) {
        return false;
    }
    try {
        files::removeFile(path);
    } catch (const FileError&) {
        // The test file could be written; leaving it behind is not an error.
    }
    return true;
}

}  // namespace zeb
