#include "platform/files/OutputPlace.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/files/FileManager.h"
#include "platform/text/PathName.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using Case = OutputError::Case;

bool isFolder(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// Returns at most the first `count` bytes of a UTF-8 text, without an incomplete character at the end.
std::string leadingBytes(std::string text, std::size_t count) {
    if (text.size() <= count) return text;
    while (count > 0 && (static_cast<unsigned char>(text[count]) & 0xc0) == 0x80)
        --count;
    text.resize(count);
    return text;
}

}  // namespace

std::unique_ptr<WritableFile> OutputFileSystem::create(const std::string& path) {
    return createForWriting(path);
}

bool OutputFileSystem::moveToFreePlace(const std::string& from, const std::string& to) {
    return files::moveToFreePlace(from, to);
}

void OutputFileSystem::moveFile(const std::string& from, const std::string& to) {
    files::moveFile(from, to);
}

void OutputFileSystem::removeFile(const std::string& path) {
    files::removeFile(path);
}

void OutputFileSystem::makeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directory(folder, error);
    if (error) throw FileError(folder, error.value());
}

OutputFileSystem& OutputPlace::system() {
    static OutputFileSystem system;
    return system;
}

OutputPlace::OutputPlace(std::string path, OutputTerms terms, OutputFileSystem& files)
    : m_path(std::move(path)), m_terms(terms), m_files(files) {}

OutputPlace::~OutputPlace() {
    if (m_isSettled || hasCreated()) return;
    try {
        putBack();
    } catch (const std::exception&) {
        // The old file keeps its other name.
    }
}

bool OutputPlace::namesFolder(const std::string& path) {
    return path.ends_with('/') || isFolder(path);
}

void OutputPlace::check(const std::string& input) const {
    checkStanding(input);
    checkFolder();
}

void OutputPlace::checkStanding(const std::string& input) const {
    if (m_path.empty()) throw OutputError(Case::noName, m_path);
    if (!input.empty() && files::isSameFile(input, m_path)) throw OutputError(Case::isInput, m_path);
    if (namesFolder(m_path)) throw OutputError(Case::isFolder, m_path);
    if (!files::kindOf(m_path)) return;
    // Replacing a link to a device would remove the link, so reject it.
    std::error_code ignored;
    const fs::file_status target = fs::status(m_path, ignored);
    if (fs::exists(target) && !fs::is_regular_file(target)) throw OutputError(Case::notRegular, m_path);
    if (m_terms.existing == OutputTerms::Existing::keep) throw OutputError(Case::exists, m_path);
}

void OutputPlace::checkFolder() const {
    std::string folder = folderOf(m_path);
    if (m_terms.missingFolder == OutputTerms::MissingFolder::make && !files::kindOf(folder))
        folder = folderOf(folder);
    if (!isFolder(folder))
        throw OutputError(files::kindOf(folder) ? Case::notAFolder : Case::noFolder, m_path, folder);
    files::requireWritableFolder(folder, m_path);
}

/// Returns "film.previous.zeb", "film.previous-2.zeb" and so on, shortened to the longest allowed name.
std::string OutputPlace::freeNameFor(int number) const {
    constexpr std::size_t longestName = 255;
    const std::string name(lastPiece(m_path));
    const std::string extension(pathExtension(name));
    std::string end = ".previous" + (number == 1 ? "" : "-" + std::to_string(number));
    if (!extension.empty()) end += "." + extension;
    const std::size_t room = longestName - std::min(longestName, end.size());
    return std::string(withoutLastPiece(m_path)) +
           leadingBytes(std::string(nameWithoutExtension(name)), room) + end;
}

void OutputPlace::setAside(const std::string& input) {
    checkStanding(input);
    if (!files::kindOf(m_path)) return;
    for (int number = 1;; ++number) {
        std::string place = freeNameFor(number);
        if (!m_files.moveToFreePlace(m_path, place)) continue;
        m_previous = std::move(place);
        return;
    }
}

std::unique_ptr<WritableFile> OutputPlace::create() {
    const std::string folder = folderOf(m_path);
    if (m_terms.missingFolder == OutputTerms::MissingFolder::make && !files::kindOf(folder)) {
        m_files.makeFolder(folder);
        m_madeFolder = folder;
    }
    try {
        auto file = m_files.create(m_path);
        m_created = file->identity();
        hold();
        return file;
    } catch (const FileError& error) {
        if (error.code() == EEXIST) throw OutputError(Case::appeared, m_path);
        throw;
    }
}

bool OutputPlace::isOwn() const {
    return m_created && files::identityOf(m_path) == m_created;
}

void OutputPlace::commit() {
    if (!isOwn()) throw OutputError(files::kindOf(m_path) ? Case::replaced : Case::removed, m_path);
    settle();
    if (m_previous.empty()) return;
    try {
        m_files.removeFile(m_previous);
        m_previous.clear();
    } catch (const FileError&) {
        // The new file is complete, so do not report the error.
    }
}

void OutputPlace::putBack() {
    const bool isThere = isOwn();
    if (m_previous.empty() || !files::kindOf(m_previous)) {
        if (isThere) m_files.removeFile(m_path);
        m_previous.clear();
    } else if (isThere) {
        // Atomic: a file exists at the path at every moment.
        m_files.moveFile(m_previous, m_path);
        m_previous.clear();
    } else if (m_files.moveToFreePlace(m_previous, m_path)) {
        m_previous.clear();
    }
    m_created.reset();
    settle();
    removeMadeFolder();
}

void OutputPlace::hold() {
    try {
        m_hold = openForReading(m_path);
    } catch (const FileError&) {
        // No read permission: identify the file by its number without holding it open.
    }
}

void OutputPlace::settle() noexcept {
    m_isSettled = true;
    m_hold.reset();
}

void OutputPlace::removeMadeFolder() noexcept {
    if (m_madeFolder.empty()) return;
    std::error_code ignored;
    fs::remove(m_madeFolder, ignored);  // fails if it is not empty
    m_madeFolder.clear();
}

}  // namespace zeb
