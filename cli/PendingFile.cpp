#include "cli/PendingFile.h"

#include <cerrno>
#include <utility>

#include "platform/FileManager.h"

namespace zeb::cli {

PendingFile::PendingFile(std::string path) : m_path(std::move(path)) {
    constexpr int mostNames = 100;
    for (int number = 1; !m_file; ++number) {
        m_temporaryPath = m_path + ".part" + (number > 1 ? std::to_string(number) : "");
        try {
            m_file = createForWriting(m_temporaryPath);
        } catch (const FileError& error) {
            if (error.code() != EEXIST || number == mostNames) throw;
        }
    }
}

PendingFile::~PendingFile() {
    if (m_temporaryPath.empty()) return;
    m_file.reset();
    try {
        files::removeFile(m_temporaryPath);
    } catch (const FileError&) {
        return;  // whatever brought us here has been reported
    }
}

void PendingFile::complete() {
    m_file->synchronise();
    m_file->close();
    files::moveFile(m_temporaryPath, m_path);
    m_temporaryPath.clear();
}

}  // namespace zeb::cli
