#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/FileHandle.h"

namespace zeb {

/// Files that appear under their names only when all of them are complete: until then they grow in a hidden
/// folder beside their places. What stood at a place survives everything but `commit`; without it nothing is
/// left behind. Used by one thread.
class StagedOutput {
public:
    enum class Existing { keep, replace };

    /// For files in `folder` ("" = the current one), which is created if only itself is missing. Throws
    /// `FileError`.
    explicit StagedOutput(std::string folder);
    ~StagedOutput();
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    /// Begins the file that will be called `name`, without a folder. Its errors name its later place. Throws
    /// `FileError`.
    std::unique_ptr<WritableFile> create(const std::string& name);

    /// Moves the files, which were closed, to their places, in the order of their creation. With
    /// `Existing::keep` a file or link that stands there is an error (EEXIST). Throws `FileError`; what has
    /// been moved by then stays.
    void commit(Existing existing);

private:
    std::string placeOf(const std::string& name) const;
    void remove() noexcept;

    std::string m_folder;
    bool m_hasMadeFolder = false;
    std::string m_stage;
    std::vector<std::string> m_names;
};

}  // namespace zeb
