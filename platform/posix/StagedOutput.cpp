#include "platform/StagedOutput.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/FileManager.h"

namespace zeb {
namespace {

/// Moves a file to a place where nothing stands yet; the error number otherwise.
int moveToFreePlace(const std::string& from, const std::string& to) {
    // A second name instead of a renaming, which would silently replace.
    if (::link(from.c_str(), to.c_str()) == 0) return ::unlink(from.c_str()) == 0 ? 0 : errno;
    if (errno == EEXIST) return errno;
    // File systems without hard links.
    if (files::kindOf(to)) return EEXIST;
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

}  // namespace

StagedOutput::StagedOutput(std::string folder) : m_folder(std::move(folder)) {
    const std::string place = m_folder.empty() ? "." : m_folder;
    if (m_folder.find('\0') != std::string::npos) throw FileError(m_folder, EINVAL);
    m_hasMadeFolder = ::mkdir(place.c_str(), 0777) == 0;
    std::string pattern = placeOf(".zeb-XXXXXX");
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

std::string StagedOutput::placeOf(const std::string& name) const {
    return m_folder.empty() || m_folder.ends_with('/') ? m_folder + name : m_folder + "/" + name;
}

std::unique_ptr<WritableFile> StagedOutput::create(const std::string& name) {
    auto file = createForWriting(m_stage + name, placeOf(name));
    m_names.push_back(name);
    return file;
}

void StagedOutput::commit(Existing existing) {
    for (const std::string& name : m_names) {
        const std::string from = m_stage + name;
        const std::string to = placeOf(name);
        if (existing == Existing::replace) {
            files::moveFile(from, to);
        } else if (const int error = moveToFreePlace(from, to); error != 0) {
            throw FileError(to, error);
        }
        m_hasMadeFolder = false;  // it holds something now
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
