#pragma once

#include <QStringList>

namespace zeb {

/// The arguments of a program start.
struct LaunchArguments {
    bool showMaker = false;
    QStringList requests;  ///< URLs: files as absolute file URLs; arguments with a scheme are unchanged

    /// Serialises the arguments for a running instance; `fromMessage` is the inverse.
    QStringList message() const;
    static LaunchArguments fromMessage(QStringList message);
};

/// Reads the command line of the application object. Ends the process for --help and --version, and with an
/// error for unknown options.
LaunchArguments readLaunchArguments();

}  // namespace zeb
