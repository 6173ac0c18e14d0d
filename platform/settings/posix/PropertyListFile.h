#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/settings/PropertyListTree.h"

namespace zeb {

/// A dictionary in a property-list file that several processes read and write. Saving is atomic: under a lock
/// the file is read, edited and replaced in one step, so that a reader finds the old contents or the new
/// ones, also after a power failure.
///
/// A symbolic link is followed and stays. The file keeps its permission bits and its form (XML or binary). A
/// file without write permission is not replaced.
class PropertyListFile {
public:
    using Warn = std::function<void(const std::string& text)>;

    /// `path` may name a file that does not exist yet. `warn` is called for each damaged file.
    PropertyListFile(std::string path, Warn warn);

    /// Returns the contents; nothing if the file is empty or damaged. A missing file reads as an empty
    /// dictionary. Throws `FileError`.
    std::optional<PropertyListTree> read() const;

    /// Creates the folder with access for the owner only, if possible, and renames a damaged file. Throws
    /// `FileError`.
    void prepare();

    /// Reads the file, applies `edit` and saves the result, which is returned. An empty or damaged file is
    /// replaced by `last` before the edit; a damaged file is kept under another name. Throws `FileError`, and
    /// `PropertyListError` for contents beyond its bounds; the file is then unchanged.
    PropertyListTree update(const PropertyListTree& last, const std::function<void(PropertyListTree&)>& edit);

private:
    struct Contents {
        std::optional<PropertyListTree> tree;  ///< nothing if the file is empty or damaged
        std::string damage;                    ///< description of the damage, if any
    };

    /// Returns the path of the file itself, after following links.
    std::string target() const;
    static Contents contentsOf(const std::string& path);
    void setAside(const std::string& path, const std::string& damage);
    static void replace(const std::string& path, const std::string& suffix, const PropertyData& bytes);

    std::string m_path;
    Warn m_warn;
};

}  // namespace zeb
