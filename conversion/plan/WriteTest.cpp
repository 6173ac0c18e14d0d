#include "conversion/plan/WriteTest.h"

#include <filesystem>

#include "platform/files/FileHandle.h"
#include "platform/files/FileManager.h"
#include "platform/files/UUID.h"

namespace zeb {

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
        // It could be written, which is all that was asked.
    }
    return true;
}

}  // namespace zeb
