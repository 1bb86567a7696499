#include "adapters/qt/QtApplication.h"

#include "adapters/ApplicationId.h"
#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/MainWindow.h"
#include "model/Colour.h"
#include "threads/Shared.h"

#include <QEventLoop>
#include <QIcon>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace vellux {

namespace {

constexpr int kLongestWaitForPaint = 1000; // ms

// While the application object is constructed, Qt reports a missing display only in its log, and then aborts.
void onStartUpMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    std::fputs(
        "vellux: there is no display to show a window on. Start Vellux from within a graphical session, or "
        "check DISPLAY or WAYLAND_DISPLAY.\n",
        stderr);
    ::_exit(EXIT_FAILURE);
}

Shared<std::function<void()>> displayLost;

// Qt's only warning before it ends the process because the display is gone, under Wayland by _exit().
void onRunTimeMessage(QtMsgType type, const QMessageLogContext& context, const QString& strMessage) {
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, strMessage)));
    if (!strMessage.startsWith(QLatin1String("The X11 connection broke")) &&
        !strMessage.startsWith(QLatin1String("The Wayland connection")))
        return;
    if (const auto lost = displayLost.get())
        lost();
}

// Installs the handler before the base class is constructed.
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
    setWindowIcon(QIcon::fromTheme(kApplicationId, lampIcon({kColourGreen, /*bFlashing=*/false})));
    setQuitOnLastWindowClosed(false);
    setCursorFlashTime(0); // a caret that blinks wakes the process twice a second
}

void QtApplication::waitForFirstPaint(MainWindow& window) {
    QEventLoop loop;
    connect(&window, &MainWindow::firstPaint, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    QTimer::singleShot(kLongestWaitForPaint, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void QtApplication::onDisplayLost(std::function<void()> lost) {
    displayLost.set(std::move(lost));
    qInstallMessageHandler(onRunTimeMessage);
}

int QtApplication::run() {
    return m_bQuitting ? EXIT_SUCCESS : exec();
}

void QtApplication::quitSoon() {
    m_bQuitting = true;
    exit(EXIT_SUCCESS);
}

} // namespace vellux
