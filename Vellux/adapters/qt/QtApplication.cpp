#include "adapters/qt/QtApplication.h"

#include "adapters/dbus/ApplicationId.h"
#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/MainWindow.h"

#include <QEventLoop>
#include <QIcon>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace vellux {

namespace {

constexpr int kLongestWaitForPaint = 1000; // ms

// While the application object is made, Qt can only tell by its log that there is no display; it then aborts.
void onStartUpMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    std::fputs(
        "vellux: there is no display to show a window on. Start Vellux from within a graphical session, or "
        "check DISPLAY or WAYLAND_DISPLAY.\n",
        stderr);
    ::_exit(EXIT_FAILURE);
}

// Installs the handler before the base class is made.
int& watchingStartUp(int& nArguments) {
    qInstallMessageHandler(onStartUpMessage);
    return nArguments;
}

} // namespace

QtApplication::QtApplication(int& nArguments, char** arguments)
    : QApplication(watchingStartUp(nArguments), arguments) {
    qInstallMessageHandler(nullptr);
    setApplicationName("Vellux");
    setApplicationVersion(VELLUX_VERSION);
    setDesktopFileName(kApplicationId);
    setWindowIcon(QIcon::fromTheme(kApplicationId, lampIcon({/*nColor=*/1, /*bFlashing=*/false})));
    setQuitOnLastWindowClosed(false);
    setCursorFlashTime(0); // a caret that blinks wakes the process twice a second
}

void QtApplication::waitForFirstPaint(MainWindow& window) {
    QEventLoop loop;
    connect(&window, &MainWindow::firstPaint, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    QTimer::singleShot(kLongestWaitForPaint, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void QtApplication::run() {
    if (!m_bQuitting)
        exec();
}

void QtApplication::quitSoon() {
    m_bQuitting = true;
    exit(EXIT_SUCCESS);
}

} // namespace vellux
