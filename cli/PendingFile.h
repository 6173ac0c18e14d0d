#pragma once

#include <memory>
#include <string>

#include "platform/FileHandle.h"

namespace zeb::cli {

/// A file that is being made under another name beside its place. It takes its place when it is complete;
/// until then what stands there stays as it is. Destroyed before that, it vanishes.
class PendingFile {
public:
    /// Creates the file. Throws `FileError`.
    explicit PendingFile(std::string path);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    /// Where it stands for the time being.
    const std::string& temporaryPath() const { return m_temporaryPath; }
    WritableFile& file() { return *m_file; }

    /// Flushes, closes and puts the file in its place, over what stood there. Throws `FileError`.
    void complete();

private:
    std::string m_path;
    std::string m_temporaryPath;
    std::unique_ptr<WritableFile> m_file;
};

}  // namespace zeb::cli
