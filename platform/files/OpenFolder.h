#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zeb {

/// A folder held open: what is done with its entries happens in this very folder, whatever becomes of its
/// path meanwhile. Symbolic links are never followed. Used by one thread at a time.
class OpenFolder {
public:
    using Date = std::chrono::system_clock::time_point;

    /// Nothing when there is no folder at `path`, when its last piece is a symbolic link, or when it cannot
    /// be read. (The pieces before it may be links.)
    static std::optional<OpenFolder> open(const std::string& path);

    OpenFolder(OpenFolder&& other) noexcept;
    OpenFolder& operator=(OpenFolder&&) = delete;
    ~OpenFolder();

    /// The names of the entries without "." and "..", in no order; nothing when they cannot all be read.
    std::optional<std::vector<std::string>> names() const;

    /// When the entry's contents were modified last, a link's own date; as far as `Date` reaches. Nothing
    /// when it cannot be read.
    std::optional<Date> modificationDate(const std::string& name) const;

    /// Removes an entry, a folder with its contents. Symbolic links are removed as links, also those that
    /// take a folder's place in the middle of it. What is mounted somewhere below stays. Removes as much as
    /// the system allows; whether the entry is gone.
    bool remove(const std::string& name) const;

private:
    explicit OpenFolder(int descriptor) : m_descriptor(descriptor) {}

    int m_descriptor;
};

}  // namespace zeb
