#include "app/Startup.h"

#include <QByteArray>
#include <QLocale>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QStringList>

namespace zeb {
namespace {

/// OpenGL emulated on the main processor is slower than Qt's software renderer.
bool hasGraphicsProcessor() {
    QOpenGLContext context;
    QOffscreenSurface surface;
    surface.create();
    if (!context.create() || !context.makeCurrent(&surface)) return false;
    const QByteArray name(reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER)));
    context.doneCurrent();
    return !name.contains("llvmpipe") && !name.contains("softpipe") && !name.contains("swrast");
}

}  // namespace

void chooseRenderer() {
#ifdef Q_OS_LINUX
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND")) return;
    if (!hasGraphicsProcessor()) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
#endif
}

TextLocale systemTextLocale() {
    std::vector<std::string> preferred;
    for (const QString& name : QLocale::system().uiLanguages())
        preferred.push_back(name.toStdString());
    return {bestTextLanguage(preferred), QLocale::system().decimalPoint().toStdString()};
}

}  // namespace zeb
