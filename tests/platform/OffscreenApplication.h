#pragma once

#include <QGuiApplication>

namespace zeb::test {

/// Creates the application object that windows need, once per process, with the offscreen platform.
inline void needApplication() {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    // Never destroyed: at process exit, objects that it refers to may already be destroyed.
    [[maybe_unused]] static const auto* application = new QGuiApplication(count, arguments);
}

}  // namespace zeb::test
