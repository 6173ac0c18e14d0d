#pragma once

#include <QStringList>

namespace zeb {

/// What the program was started with.
struct LaunchArguments {
    bool showMaker = false;
    QStringList requests;  ///< URLs: files as absolute file URLs, anything with a scheme as it was written

    /// All of it as texts for an instance that runs already, and what such texts say.
    QStringList message() const;
    static LaunchArguments fromMessage(QStringList message);
};

/// Reads the command line of the application object; answers --help and --version, and complains about what
/// it does not know, by ending the process.
LaunchArguments readLaunchArguments();

}  // namespace zeb
