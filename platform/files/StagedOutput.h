#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileHandle.h"
#include "platform/files/OutputPlace.h"

namespace zeb {

/// Files that appear under their names only when all of them are complete. Until then they are in a hidden
/// folder beside their paths. Only `commit` replaces existing files; without it no file is left behind. Used
/// by one thread.
class StagedOutput {
public:
    /// For files in `folder` ("" = the current folder). Throws `FileError`.
    StagedOutput(std::string_view folder, OutputTerms terms);
    ~StagedOutput();
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    /// Creates the file that will be called `name`, without a folder. Its errors contain its final path.
    /// Throws the errors of `OutputPlace::check`.
    std::unique_ptr<WritableFile> create(std::string_view name);

    /// Moves the files, which must be closed, to their paths, in the order of their creation. An existing
    /// file that must not be overwritten is an error. Throws the errors of `create`; files moved before stay.
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
