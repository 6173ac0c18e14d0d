#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/files/FileHandle.h"
#include "platform/files/OutputError.h"

namespace zeb {

/// The calls by which an output changes a file system, so that tests can make each of them fail. All throw
/// `FileError`.
class OutputFileSystem {
public:
    virtual ~OutputFileSystem() = default;

    virtual std::unique_ptr<WritableFile> create(const std::string& path);
    virtual bool moveToFreePlace(const std::string& from, const std::string& to);
    virtual void moveFile(const std::string& from, const std::string& to);
    virtual void removeFile(const std::string& path);
    virtual void makeFolder(const std::string& folder);
};

/// What an output may do to a place.
struct OutputTerms {
    enum class Existing {
        keep,     ///< a file or link that stands there is an error
        replace,  ///< it gives way, in the end
    };
    enum class MissingFolder {
        refuse,
        make,  ///< the folder of the output is made, if it alone is missing
    };

    Existing existing = Existing::keep;
    MissingFolder missingFolder = MissingFolder::refuse;
};

/// The place of a file that is being made: tells what may stand there and keeps it until the new file is
/// complete.
///
/// `setAside` gives an old file another name beside its place ("film.previous.zeb"), `create` makes the new
/// one, and one of three calls ends the work: `commit` removes the old file, `putBack` removes the new one
/// and gives the old one its name again, `keepBoth` leaves both. A process that is killed leaves both as
/// well. A file that others put at the place is never touched. Links are treated as what they are: the link
/// is set aside, never what it leads to.
///
/// Without any of these calls the destructor puts the old file back if no new one was created. Used by one
/// thread at a time.
class OutputPlace {
public:
    explicit OutputPlace(std::string path, OutputTerms terms = {}, OutputFileSystem& files = system());
    ~OutputPlace();
    OutputPlace(const OutputPlace&) = delete;
    OutputPlace& operator=(const OutputPlace&) = delete;

    /// Whether `path` means a folder for files named otherwise: one is there, or the path ends in "/".
    static bool namesFolder(const std::string& path);

    const std::string& path() const noexcept { return m_path; }
    const OutputTerms& terms() const noexcept { return m_terms; }

    /// Throws where no file can be made by these terms: `OutputError`, or `FileError` for a folder that is
    /// not writable. `input`, if not empty, must not be what stands there. Changes nothing.
    void check(const std::string& input = {}) const;
    /// The part of `check` that is about the folder.
    void checkFolder() const;

    /// Refuses what `check` refuses of what stands there, and renames a file or link that may be replaced.
    /// Throws `OutputError`, `FileError`.
    void setAside(const std::string& input = {});
    /// Creates the file, with its folder if that is to be made. `OutputError` when something stands there by
    /// now, else `FileError`.
    std::unique_ptr<WritableFile> create();

    /// Whether the file that was created stands at the place. False before `create`.
    bool isOwn() const;
    bool hasCreated() const noexcept { return m_created.has_value(); }
    /// The old file's place while it is set aside; empty when there is none.
    const std::string& previousPath() const noexcept { return m_previous; }

    /// The new file is complete. Throws `OutputError` (replaced, removed) when it does not stand at its
    /// place; nothing is changed then. Otherwise removes the old file; where that fails it stays, and
    /// `previousPath` tells so.
    void commit();
    /// The new file is given up. Removes it, puts the old one in its place and removes the folder that was
    /// made, if it is empty. What others have put at the place stays; the old file then stays aside. Throws
    /// `FileError`; files are then where they were.
    void putBack();
    /// The new file stays although it is not complete, and the old one stays aside.
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
    /// Open until the work has ended, so that the system gives the number of a removed file to no other one.
    std::unique_ptr<ReadableFile> m_hold;
    bool m_isSettled = false;
};

}  // namespace zeb
