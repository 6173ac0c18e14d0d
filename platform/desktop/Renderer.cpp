#include "platform/desktop/Renderer.h"

#include <QByteArray>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>

namespace zeb {
namespace {

/// OpenGL by a program on the main processor is slower than Qt's own drawing there.
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

}  // namespace zeb
