#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileHandle.h"
#include "platform/files/OutputPlace.h"

namespace zeb {

/// Files that appear under their names only when all of them are complete: until then they grow in a hidden
/// folder beside their places. What stood at a place survives everything but `commit`; without it nothing is
/// left behind. Used by one thread.
class StagedOutput {
public:
    /// For files in `folder` ("" = the current one), by these terms. Throws `FileError`.
    StagedOutput(std::string_view folder, OutputTerms terms);
    ~StagedOutput();
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    /// Begins the file that will be called `name`, without a folder. Its errors name its later place. Throws
    /// what `OutputPlace::check` throws of it.
    std::unique_ptr<WritableFile> create(std::string_view name);

    /// Moves the files, which were closed, to their places, in the order of their creation. What stands there
    /// and must not be replaced is an error. Throws as `create` does; what has been moved by then stays.
    void commit();

private:
    std::string pathOf(std::string_view name) const;
    OutputPlace place(std::string_view name) const { return OutputPlace(pathOf(name), m_terms); }
    void remove() noexcept;

    std::string m_folder;
    OutputTerms m_terms;
    bool m_hasMadeFolder = false;
    std::string m_stage;
    std::vector<std::string> m_names;
};

}  // namespace zeb
