#pragma once

#include <QGuiApplication>

namespace zeb::test {

/// Makes the application object that windows need, once for the whole process, on a screen that is none.
inline void needApplication() {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    // Never ended: by then what it looks after has gone with the process.
    [[maybe_unused]] static const auto* application = new QGuiApplication(count, arguments);
}

}  // namespace zeb::test
