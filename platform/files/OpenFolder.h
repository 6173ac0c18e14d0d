#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zeb {

/// A folder held open. Operations on its entries apply to this folder even if its path changes. Symbolic
/// links are never followed. Used by one thread at a time.
class OpenFolder {
public:
    using Date = std::chrono::system_clock::time_point;

    /// Returns nothing if there is no folder at `path`, if its last piece is a symbolic link, or if it cannot
    /// be read. (The other pieces may be links.)
    static std::optional<OpenFolder> open(const std::string& path);

    OpenFolder(OpenFolder&& other) noexcept;
    OpenFolder& operator=(OpenFolder&&) = delete;
    ~OpenFolder();

    /// Returns the names of the entries without "." and "..", in no order; nothing if they cannot all be
    /// read.
    std::optional<std::vector<std::string>> names() const;

    /// Returns the modification time of an entry, for a link the link's, limited to the range of `Date`.
    /// Returns nothing if it cannot be read.
    std::optional<Date> modificationDate(const std::string& name) const;

    /// Removes an entry, a folder with its contents. Symbolic links are removed as links, even if one
    /// replaces a folder during the removal. Mounted file systems below the entry stay. Removes as much as
    /// the system allows; returns true if the entry is gone.
    bool remove(const std::string& name) const;

private:
    explicit OpenFolder(int descriptor) : m_descriptor(descriptor) {}

    int m_descriptor;
};

}  // namespace zeb
