#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zeb {

/// What a panel offers to choose.
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
    std::string folder;  ///< where it starts; empty: the system chooses
    std::vector<ContentType> contentTypes;
};

struct SavePanel {
    std::string title;
    std::string folder;
    std::string proposedName;
    std::vector<ContentType> contentTypes;
};

/// The system's panels for choosing files. Used on the main thread; only one panel is open at a time, and a
/// second request meanwhile is answered with nothing.
class FilePanels {
public:
    /// Called later on the main thread, once, with the path that was confirmed; nothing when the panel was
    /// left.
    using Answer = std::function<void(std::optional<std::string> path)>;

    virtual ~FilePanels() = default;

    /// Asks for one existing file.
    virtual void open(const OpenPanel& panel, Answer answer) = 0;
    /// Asks for a place for a file; folders can be made there. The user has agreed to replace a file that
    /// exists.
    virtual void save(const SavePanel& panel, Answer answer) = 0;
};

}  // namespace zeb
