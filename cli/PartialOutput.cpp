#include "cli/PartialOutput.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include "cli/Text.h"
#include "format/PartialFile.h"
#include "platform/FileManager.h"

namespace zeb::cli {

void PartialOutput::noteCreated() {
    if (m_isReplaced && !m_created) m_created = identity();
}

PartialOutput::Outcome PartialOutput::settle() const {
    if (!m_isReplaced || files::kindOf(m_path) != files::Kind::regular) return {};
    // Someone else may have put a file of their own there meanwhile, another run of this program for
    // instance.
    if (m_created && identity() != m_created)
        return {0, m_path + " was replaced meanwhile and is left alone"};
    // A file that appeared unnoticed is what is left of a writer that failed at its first bytes, or not ours.
    std::error_code ignored;
    if (!m_created && std::filesystem::file_size(m_path, ignored) != 0) return {};
    std::int64_t seconds = 0;
    try {
        seconds = finishPartialFile(m_path);
    } catch (const FileError& error) {
        return {0, m_path + " stays unfinished (" + error.what() + ")"};
    } catch (const std::exception&) {
        // Not even its header was written.
    }
    if (seconds > 0) {
        return {seconds, m_path + " was finished after " + countText(seconds, "second", "seconds") +
                             " and plays as a shorter movie"};
    }
    try {
        files::removeFile(m_path);
    } catch (const FileError& error) {
        return {0, m_path + " has no whole second and could not be removed (" + error.what() + ")"};
    }
    return {0, m_path + " had no whole second yet and was removed"};
}

std::optional<PartialOutput::Identity> PartialOutput::identity() const {
    struct stat status {};
    if (lstat(m_path.c_str(), &status) != 0) return std::nullopt;
    return Identity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

}  // namespace zeb::cli
