#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zeb {

/// A kind of files that a panel offers.
struct ContentType {
    enum Kind {
        movie,              ///< films with sound
        video,              ///< films
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

/// The system's panels for choosing files. Used on the main thread. Only one panel is open at a time; a
/// second request is answered with nothing.
class FilePanels {
public:
    /// Called once, later, on the main thread with the confirmed path; nothing if the panel was cancelled.
    using Answer = std::function<void(std::optional<std::string> path)>;

    virtual ~FilePanels() = default;

    /// Asks for one existing file.
    virtual void open(const OpenPanel& panel, Answer answer) = 0;
    /// Asks for the place of a new file; the user can create folders. The panel has asked before it returns
    /// an existing file.
    virtual void save(const SavePanel& panel, Answer answer) = 0;
};

}  // namespace zeb
