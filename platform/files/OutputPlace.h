#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/files/FileHandle.h"
#include "platform/files/OutputError.h"

namespace zeb {

/// The file system calls that change files, as virtual functions so that tests can make each of them fail.
/// All throw `FileError`.
class OutputFileSystem {
public:
    virtual ~OutputFileSystem() = default;

    virtual std::unique_ptr<WritableFile> create(const std::string& path);
    virtual bool moveToFreePlace(const std::string& from, const std::string& to);
    virtual void moveFile(const std::string& from, const std::string& to);
    virtual void removeFile(const std::string& path);
    virtual void makeFolder(const std::string& folder);
};

/// Rules for existing files and missing folders.
struct OutputTerms {
    enum class Existing {
        keep,     ///< an existing file or link is an error
        replace,  ///< an existing file is overwritten at the end
    };
    enum class MissingFolder {
        refuse,
        make,  ///< the folder is created if only its last piece is missing
    };

    Existing existing = Existing::keep;
    MissingFolder missingFolder = MissingFolder::refuse;
};

/// The path of a file being written. Checks what exists there and keeps it until the new file is complete.
///
/// `setAside` renames an old file in its folder ("film.previous.zeb"), and `create` creates the new one. One
/// of three calls ends the work: `commit` removes the old file; `putBack` removes the new file and restores
/// the old one; `keepBoth` leaves both. Both files also remain if the process is killed. A file that another
/// process creates at the path is never changed. Links are renamed as links; their targets are not changed.
///
/// Without any of these calls the destructor restores the old file if no new one was created. Used by one
/// thread at a time.
class OutputPlace {
public:
    explicit OutputPlace(std::string path, OutputTerms terms = {}, OutputFileSystem& files = system());
    ~OutputPlace();
    OutputPlace(const OutputPlace&) = delete;
    OutputPlace& operator=(const OutputPlace&) = delete;

    /// Returns true if `path` names a folder in which the caller chooses file names: it exists as a folder or
    /// ends in "/".
    static bool namesFolder(const std::string& path);

    const std::string& path() const noexcept { return m_path; }
    const OutputTerms& terms() const noexcept { return m_terms; }

    /// Throws if no file can be created by these terms: `OutputError`, or `FileError` for a folder without
    /// write permission. `input`, if not empty, must not be the file at the path. Changes nothing.
    void check(const std::string& input = {}) const;
    /// Checks the folder only.
    void checkFolder() const;

    /// Rejects an existing file as `check` does, and renames a file or link that may be replaced. Throws
    /// `OutputError`, `FileError`.
    void setAside(const std::string& input = {});
    /// Creates the file, and its folder if the terms allow it. Throws `OutputError` if a file exists at the
    /// path, else `FileError`.
    std::unique_ptr<WritableFile> create();

    /// Returns true if the created file is at the path. False before `create`.
    bool isOwn() const;
    bool hasCreated() const noexcept { return m_created.has_value(); }
    /// The path of the old file while it is set aside; empty if there is none.
    const std::string& previousPath() const noexcept { return m_previous; }

    /// Completes the new file. Throws `OutputError` (replaced, removed), without changes, if it is not at its
    /// path. Otherwise removes the old file. If that fails, the old file stays and `previousPath` returns its
    /// path.
    void commit();
    /// Discards the new file: removes it, restores the old one and removes the created folder if it is empty.
    /// A file of another process at the path stays; the old file then stays aside. Throws `FileError`,
    /// without having moved a file.
    void putBack();
    /// Ends the work with the incomplete new file at the path and the old file aside.
    void keepBoth() noexcept { settle(); }

private:
    static OutputFileSystem& system();
    void checkStanding(const std::string& input) const;
    std::string freeNameFor(int number) const;
    void removeMadeFolder() noexcept;
    void hold();
    void settle() noexcept;

    std::string m_path;
    OutputTerms m_terms;
    OutputFileSystem& m_files;
    std::string m_previous;
    std::string m_madeFolder;
    std::optional<FileIdentity> m_created;
    /// Open until the work has ended, so that the system does not reuse the inode number of a removed file.
    std::unique_ptr<ReadableFile> m_hold;
    bool m_isSettled = false;
};

}  // namespace zeb
