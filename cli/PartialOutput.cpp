#include "cli/PartialOutput.h"

#include <sys/stat.h>

#include "cli/Text.h"
#include "format/MovieFacts.h"
#include "format/PartialFile.h"
#include "platform/FileManager.h"
#include "platform/LocalizedText.h"

namespace zeb::cli {
namespace {

bool hasWholeSecond(const std::string& path) {
    try {
        return readMovieFacts(*openForReading(path)).wholeSeconds > 0;
    } catch (const PlatformError&) {
        return false;  // not even a header
    }
}

}  // namespace

void PartialOutput::noteCreated() {
    if (m_isReplaced && !m_created) m_created = identity();
}

PartialOutput::Outcome PartialOutput::settle() const {
    if (!m_isReplaced || files::kindOf(m_path) != files::Kind::regular) return {};
    // Someone else may have put a file of their own there meanwhile, another run of this program for
    // instance.
    if (m_created && identity() != m_created)
        return {0, m_path + " was replaced meanwhile and is left alone"};
    // A file that appeared unnoticed is the run's if it was stopped within its first second.
    if (!m_created && hasWholeSecond(m_path)) return {};
    std::int64_t seconds = 0;
    try {
        seconds = finishPartialFile(m_path);
    } catch (const FileError& error) {
        return {0, m_path + " stays unfinished (" + localizedText(error.reasonText()) + ")"};
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
        return {0, m_path + " has no whole second and could not be removed (" +
                       localizedText(error.reasonText()) + ")"};
    }
    return {0, m_path + " had no whole second yet and was removed"};
}

std::optional<PartialOutput::Identity> PartialOutput::identity() const {
    struct stat status {};
    if (lstat(m_path.c_str(), &status) != 0) return std::nullopt;
    return Identity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

}  // namespace zeb::cli
