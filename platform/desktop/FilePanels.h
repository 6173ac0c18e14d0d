#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zeb {

/// A kind of files to choose from.
struct ContentType {
    enum Kind {
        movie,              ///< videos with sound
        video,              ///< videos
        data,               ///< any file
        filenameExtension,  ///< files that end in a dot and `extension`
    };
    Kind kind = data;
    std::string extension;  ///< without the dot, lower case

    bool operator==(const ContentType&) const = default;
};

struct OpenPanel {
    std::string title;
    std::string folder;  ///< start folder; empty: the system chooses
    std::vector<ContentType> contentTypes;
};

struct SavePanel {
    std::string title;
    std::string folder;
    std::string proposedName;
    std::vector<ContentType> contentTypes;
};

/// The system's dialogs for choosing files. Used on the main thread. Only one panel is open at a time; a
/// second request returns nothing.
class FilePanels {
public:
    /// Called once, later, on the main thread with the confirmed path; nothing if the panel was cancelled.
    using Answer = std::function<void(std::optional<std::string> path)>;

    virtual ~FilePanels() = default;

    /// Shows a panel for one existing file.
    virtual void open(const OpenPanel& panel, Answer answer) = 0;
    /// Shows a panel for the path of a new file; the user can create folders. The panel confirms overwriting
    /// before it returns an existing file.
    virtual void save(const SavePanel& panel, Answer answer) = 0;
};

}  // namespace zeb
