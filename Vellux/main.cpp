// The application: builds the adapters, installs them as the platform, and enters Qt's loop.

#include "VelluxAppDelegate.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/dbus/DesktopProxy.h"
#include "adapters/dbus/Notification.h"
#include "adapters/dbus/ProcessActivity.h"
#include "adapters/dbus/ResumeNotice.h"
#include "adapters/dbus/SingleInstance.h"
#include "adapters/hidapi/HidrawManager.h"
#include "adapters/linux/DeviceRemedy.h"
#include "adapters/linux/LinuxThreads.h"
#include "adapters/linux/StandardDirectories.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "adapters/qt/Activation.h"
#include "adapters/qt/MainWindow.h"
#include "adapters/qt/QtApplication.h"
#include "adapters/qt/QtDesktop.h"
#include "adapters/qt/QtMainThread.h"
#include "adapters/qt/WindowTray.h"
#include "platform/Platform.h"
#include "support/WorkerThread.h"

#include <csignal>
#include <cstdlib>
#include <utility>

int main(int nArguments, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    vellux::QtApplication application(nArguments, arguments);
    const auto instance = vellux::SingleInstance::claim();
    if (instance == nullptr)
        return EXIT_SUCCESS; // the one that runs shows its window

    VelluxAppDelegate& delegate = VelluxAppDelegate::sharedVelluxAppDelegate();
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();

    vellux::QtMainThread mainThread;
    vellux::HidrawManager lights(mainThread);
    vellux::CurlTransport transport(mainThread, {{}, /*bUseProxies=*/true, vellux::desktopProxies()});
    vellux::SystemClock clock;
    vellux::LinuxThreads threads;
    vellux::MainWindow window({mainThread, controller, client, vellux::deviceRemedy});
    vellux::QtDesktop desktop(window,
                              {vellux::userDataHome(vellux::readUserEnvironment()),
                               [&application] { application.quitSoon(); }, vellux::beginProcessActivity});
    vellux::installPlatform({lights, transport, mainThread, clock, threads, desktop});
    const vellux::WindowTray tray({mainThread, controller, window});

    bool bEnded = false;
    const auto endOnce = [&] {
        if (std::exchange(bEnded, true))
            return;
        lights.hurry();
        delegate.applicationWillTerminate();
        mainThread.close();
        transport.close();
        vellux::WorkerThread::joinAll();
    };
    vellux::QtApplication::onDisplayLost([&] { mainThread.runAndWait(endOnce); });
    // A main thread that waits for an answer, or for a light that hangs, is free again soon.
    const vellux::TerminationWatch terminationWatch([&] {
        mainThread.post([&] {
            vellux::assertMainThread();
            desktop.terminate();
        });
        transport.close();
        lights.hurry();
    });

    vellux::assertMainThread();
    delegate.setWindow(&window);
    window.makeKeyAndOrderFront();
    application.waitForFirstPaint(window);
    delegate.applicationDidFinishLaunching();

    const vellux::ResumeNotice resumeNotice([&lights] { lights.redeliver(); });
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
    endOnce();
    return nStatus;
}
