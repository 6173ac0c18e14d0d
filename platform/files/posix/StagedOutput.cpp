#include "platform/files/StagedOutput.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/FileManager.h"

namespace zeb {

StagedOutput::StagedOutput(std::string_view folder, OutputTerms terms) : m_folder(folder), m_terms(terms) {
    const std::string place = m_folder.empty() ? "." : m_folder;
    if (m_folder.find('\0') != std::string::npos) throw FileError(m_folder, EINVAL);
    if (m_terms.missingFolder == OutputTerms::MissingFolder::make)
        m_hasMadeFolder = ::mkdir(place.c_str(), 0777) == 0;
    std::string pattern = pathOf(".zeb-XXXXXX");
    if (::mkdtemp(pattern.data()) == nullptr) {
        const int error = errno;
        remove();
        throw FileError(place, error);
    }
    m_stage = pattern + "/";
}

StagedOutput::~StagedOutput() {
    remove();
}

std::string StagedOutput::pathOf(std::string_view name) const {
    std::string path = m_folder;
    if (!path.empty() && path.back() != '/') path += '/';
    return path.append(name);
}

std::unique_ptr<WritableFile> StagedOutput::create(std::string_view name) {
    place(name).check();
    auto file = createForWriting(std::string(m_stage).append(name), pathOf(name));
    m_names.emplace_back(name);
    return file;
}

void StagedOutput::commit() {
    for (const std::string& name : m_names) {
        const std::string from = m_stage + name;
        const std::string to = pathOf(name);
        if (m_terms.existing == OutputTerms::Existing::replace) {
            place(name).check();
            files::moveFile(from, to);
        } else if (!files::moveToFreePlace(from, to)) {
            throw OutputError(OutputError::Case::appeared, to);
        }
        m_hasMadeFolder = false;  // it contains a file now
    }
    m_names.clear();
}

void StagedOutput::remove() noexcept {
    for (const std::string& name : m_names)
        ::unlink((m_stage + name).c_str());
    if (!m_stage.empty()) ::rmdir(m_stage.c_str());
    if (m_hasMadeFolder) ::rmdir(m_folder.c_str());
}

}  // namespace zeb
