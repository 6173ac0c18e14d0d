#include "app/LaunchArguments.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <utility>

#include "platform/text/URL.h"

namespace zeb {
namespace {

/// Cannot be the beginning of a request.
constexpr const char* makerMark = "--maker";

/// Returns whether an argument is a URL rather than a file name: it has a scheme and no such file exists.
bool isURL(const QString& argument) {
    const auto url = URL::parse(argument.toStdString());
    return url && url->components().scheme && !QFileInfo::exists(argument);
}

}  // namespace

QStringList LaunchArguments::message() const {
    return showMaker ? QStringList(QString(makerMark)) + requests : requests;
}

LaunchArguments LaunchArguments::fromMessage(QStringList message) {
    const bool showMaker = message.removeAll(QString(makerMark)) > 0;
    return {showMaker, std::move(message)};
}

LaunchArguments readLaunchArguments() {
    QCommandLineParser parser;
    parser.setApplicationDescription("Turns videos into ZEB movies, and plays them.");
    const QCommandLineOption maker("maker", "Keep the converter's window in sight.");
    parser.addOption(maker);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        "FILE",
        "Movies (.zeb) to play, each in a window of its own; a video to convert; a zebmaker: request.",
        "[FILE...]");
    parser.process(QCoreApplication::arguments());

    LaunchArguments result;
    result.showMaker = parser.isSet(maker);
    for (const QString& argument : parser.positionalArguments()) {
        const std::string text = argument.toStdString();
        result.requests << (isURL(argument) ? argument : QString::fromStdString(URL::forFile(text).text()));
    }
    return result;
}

}  // namespace zeb
