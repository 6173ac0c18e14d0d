#pragma once

#include <QGuiApplication>

namespace zeb::test {

/// Makes the application object that windows need, once for the whole process, on a screen that is none.
inline void needApplication() {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QGuiApplication application(count, arguments);
}

}  // namespace zeb::test
