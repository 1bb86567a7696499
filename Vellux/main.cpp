// The application: builds the adapters, installs them as the platform, and enters Qt's loop.

#include "Program.h"
#include "VelluxAppDelegate.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/dbus/DesktopProxy.h"
#include "adapters/dbus/Notification.h"
#include "adapters/dbus/ProcessActivity.h"
#include "adapters/dbus/ResumeNotice.h"
#include "adapters/dbus/SingleInstance.h"
#include "adapters/hidraw/HidrawManager.h"
#include "adapters/linux/Resources.h"
#include "adapters/linux/StandardDirectories.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "adapters/linux/UdevRuleCommand.h"
#include "adapters/qt/Activation.h"
#include "adapters/qt/ChoicesFile.h"
#include "adapters/qt/MainWindow.h"
#include "adapters/qt/QtApplication.h"
#include "adapters/qt/QtDesktop.h"
#include "adapters/qt/QtMainThread.h"
#include "adapters/qt/QtTimers.h"
#include "adapters/qt/WindowTray.h"
#include "app/ConnectionLog.h"
#include "app/Following.h"
#include "app/Reconnector.h"
#include "app/UnreachedLight.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

namespace {

int failure(const char* strText) {
    std::fprintf(stderr, "vellux: %s\n", strText);
    return EXIT_FAILURE;
}

/// Out of memory, the program can only say so; any other uncaught exception is a bug.
[[noreturn]] void endOnException() {
    try {
        if (const auto thrown = std::current_exception())
            std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        std::fputs("vellux: out of memory\n", stderr);
        std::_Exit(EXIT_FAILURE);
    } catch (...) {
        std::abort();
    }
    std::abort();
}

} // namespace

int main(int nArguments, char** arguments) {
    vellux::catchTerminationSignals();
    std::set_terminate(endOnException);
    std::signal(SIGPIPE, SIG_IGN);
    if (const char* const strMissing = vellux::missingResource())
        return failure(strMissing);
    vellux::QtApplication application(nArguments, arguments);
    const auto instance = vellux::SingleInstance::claim();
    if (instance == nullptr)
        return EXIT_SUCCESS; // the running one shows its window

    VelluxAppDelegate& delegate = VelluxAppDelegate::sharedVelluxAppDelegate();
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();

    vellux::QtMainThread mainThread;
    vellux::HidrawManager lights(mainThread);
    const vellux::DesktopProxies proxies = vellux::desktopProxies();
    vellux::ConnectionLog connectionLog;
    vellux::CurlTransportOptions options{{}, /*bUseProxies=*/true, proxies.proxyOf, proxies.askAgain};
    options.observer = [&connectionLog](const auto& exchange) { connectionLog.add(exchange); };
    vellux::CurlTransport transport(mainThread, std::move(options));
    vellux::SystemClock clock;
    vellux::MainWindow window({mainThread, controller, client, vellux::udevRuleCommand});
    vellux::QtDesktop desktop(window,
                              {vellux::userDataHome(vellux::readUserEnvironment()),
                               [&controller] { controller.openLink(nullptr); },
                               [&application] { application.quitSoon(); }, vellux::beginProcessActivity});
    vellux::Program program({lights, transport, mainThread, clock, desktop});
    vellux::QtTimers timers;
    vellux::ChoicesFile choicesFile;
    vellux::Following following(mainThread, controller, client);
    vellux::Reconnector reconnector({mainThread, timers, controller, following, choicesFile.choices()});
    const vellux::UnreachedLight unreachedLight(
        {mainThread, timers, controller, following, choicesFile.choices()});
    const vellux::WindowTray tray({mainThread, controller, window});

    // Also unblocks a main thread that waits for an answer or for a light that hangs.
    const auto terminationWatch = vellux::TerminationWatch::start([&] { program.requestEnd(); });
    if (terminationWatch == nullptr)
        return failure("can't create a thread. Is a limit on processes or memory reached?");

    vellux::QtApplication::onDisplayLost([&] { mainThread.runAndWait([&] { program.end(); }); });
    program.show(window);
    application.waitForFirstPaint(window);
    if (!vellux::isTerminationRequested()) // otherwise nothing may be lit
        program.start();

    const vellux::ResumeNotice resumeNotice([&] {
        lights.redeliver();
        reconnector.hurry();
    });
    QObject::connect(&window, &vellux::MainWindow::followingLost, [] {
        vellux::showNotification("Vellux", "Your presence is no longer followed. Open Vellux to reconnect.");
    });
    instance->setActivated([&](const QString& strToken) {
        vellux::useActivationToken(window, strToken);
        delegate.applicationShouldHandleReopen(window.isVisible());
    });
    QObject::connect(&application, &QGuiApplication::applicationStateChanged,
                     [&delegate] { delegate.applicationDidChangeOcclusionState(); });
    const int nStatus = application.run();

    vellux::QtApplication::onDisplayLost({});
    program.end();
    return nStatus;
}
