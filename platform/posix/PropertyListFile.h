#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "platform/PropertyListTree.h"

namespace zeb {

/// A dictionary in a property-list file that several processes read and write. Each writes it whole: under a
/// lock it reads what the others have left, makes its changes, and puts the new file in the old one's place
/// in one step, so that whoever reads, even after the power has failed, finds the old contents or the new
/// ones.
///
/// A symbolic link is followed and stays; the file keeps its permission bits and its form (XML or binary).
/// One that may not be written is not replaced either.
class PropertyListFile {
public:
    using Warn = std::function<void(const std::string& text)>;

    /// `path` may name a file that does not exist yet. `warn` hears of damaged files.
    PropertyListFile(std::string path, Warn warn);

    const std::string& path() const noexcept { return m_path; }
    /// Where the links lead that `path` names at the moment.
    std::string target() const;

    /// The contents if the file is another one than at the last call of `readIfChanged` or `update`; nothing
    /// otherwise, also while it is empty or damaged, which may be a moment in somebody's writing. A file that
    /// does not exist reads as an empty dictionary. Throws `FileError`.
    std::optional<PropertyListTree> readIfChanged();

    /// Creates the folder, for its owner alone, as far as the system lets it, and moves a damaged file to
    /// another name. Throws `FileError`.
    void prepare();

    /// Applies `edit` to the contents that the file has now, and writes them. Where it is empty or damaged,
    /// `last` takes their place; a damaged file is kept under another name. Returns the new contents. Throws
    /// `FileError`, and `PropertyListError` for contents beyond its bounds; then the file is as it was.
    PropertyListTree update(const PropertyListTree& last, const std::function<void(PropertyListTree&)>& edit);

private:
    struct Contents {
        std::optional<PropertyListTree> tree;  ///< nothing if the file is empty or damaged
        std::string damage;                    ///< what is wrong with it; empty if it is empty
    };

    static Contents read(const std::string& path);
    void setAside(const std::string& path, const std::string& damage);
    static void replace(const std::string& path, const std::string& suffix, const PropertyData& bytes);

    std::string m_path;
    Warn m_warn;
    bool m_hasLooked = false;
    std::optional<files::Version>
        m_version;  ///< of what was read or written last; nothing: there was no file
};

}  // namespace zeb
