#include "WindowedRun.h"

#include "HeadlessRun.h"
#include "Program.h"
#include "VelluxAppDelegate.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/linux/AutostartEntry.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "adapters/linux/UdevRuleCommand.h"
#include "adapters/qt/ChoicesFile.h"
#include "adapters/qt/DetailsWindow.h"
#include "adapters/qt/MainWindow.h"
#include "adapters/qt/MorePage.h"
#include "adapters/qt/QtApplication.h"
#include "adapters/qt/QtDesktop.h"
#include "adapters/qt/QtMainThread.h"
#include "adapters/qt/QtTimers.h"
#include "adapters/qt/WindowTray.h"
#include "app/ConnectionLog.h"
#include "app/Following.h"
#include "app/Reconnector.h"
#include "app/UnreachedLight.h"
#include "platform/PrivateDirectory.h"
#include "platform/ServerWatch.h"
#include "platform/WindowWatch.h"
#include "window/LampPanel.h"
#include "window/Look.h"
#include "window/PictureTour.h"

#include <memory>
#include <utility>
#include <vector>

namespace vellux::simulator {

namespace {

/// The light as the controller sees it; a virtual one has no node.
std::vector<LightNode> lightNodes(VelluxWindowUi& controller) {
    const vellux::LightState light = controller.light().get();
    if (light.access == vellux::LightState::Access::NoLight)
        return {};
    const bool bUsable = light.access == vellux::LightState::Access::Usable;
    return {{"virtual", light.nVendorID, light.nProductID, bUsable ? "" : "Permission denied"}};
}

const PresenceServerOptions kAccount = {"EXAMPLE\\robin", "example-password"};

} // namespace

int showWindow(char* strProgram, const Options& options) {
    prepareLook(options.look);
    int nArguments = 1;
    char* arguments[] = {strProgram, nullptr};
    QtApplication application(nArguments, arguments);
    applyLook(options.look);

    Changes changes;
    Console console(stdout);
    const auto directory = PrivateDirectory::create();
    if (directory == nullptr)
        return complain(kNotAsExpected, "no temporary directory can be made");
    ServerWatch serverWatch(console, changes);
    const auto authority = CertificateAuthority::create();
    const auto server = authority ? PresenceServer::start(*authority, kAccount, &serverWatch) : nullptr;
    if (server == nullptr)
        return complain(kNotAsExpected, "the presence server can't be started");

    VelluxAppDelegate& delegate = VelluxAppDelegate::sharedVelluxAppDelegate();
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();

    QtMainThread mainThread;
    ConnectionLog log;
    CurlTransportOptions transportOptions{authority->pem(), /*bUseProxies=*/false};
    transportOptions.observer = [&log](const HttpExchange& exchange) { log.add(exchange); };
    CurlTransport transport(mainThread, std::move(transportOptions));
    VirtualLights lights(mainThread);
    const auto light = std::make_shared<VirtualLight>(options.light, console, changes);
    lights.plug(light);
    SystemClock clock;
    QtTimers timers;
    // Forgotten with the program, as the entry is.
    ChoicesFile choicesFile(QString::fromStdString(directory->path() + "/choices.ini"));
    Observable<Choices>& choices = choicesFile.choices();
    const AutostartEntry autostart(directory->path(), "vellux");
    Following following(mainThread, controller, client);
    MainWindow window(
        {mainThread, controller, following, log, choices, timers, udevRuleCommand, directory->path()});
    QtDesktop desktop(window, {directory->path(),
                               [&controller] { controller.openLink(nullptr); },
                               [&application] { application.quitSoon(); },
                               {}});
    Program program({lights, transport, mainThread, clock, desktop});
    const Reconnector reconnector({mainThread, timers, controller, following, choices});
    const UnreachedLight unreachedLight({mainThread, timers, controller, following, choices});
    const WindowTray tray({mainThread, controller, window, following, choices});
    MorePage morePage(window, {mainThread,
                               choicesFile,
                               {[&] { return autostart.isEnabled(); },
                                [&](bool bOn) { return autostart.setEnabled(bOn); }, autostart.path()}});
    DetailsWindow details(window,
                          {mainThread, controller, log, curlVersion(), [&tray] { return tray.isThere(); },
                           [&controller] { return lightNodes(controller); }});
    QObject::connect(&window, &MainWindow::moreAsked, &morePage, &MorePage::present);
    QObject::connect(&window, &MainWindow::detailsAsked, &details, &DetailsWindow::present);
    const WindowWatch windowWatch(controller, console, changes);
    const auto terminationWatch = TerminationWatch::start([&] { program.requestEnd(); });
    if (terminationWatch == nullptr)
        return complain(kNotAsExpected, "can't create a thread");

    program.show(window);
    application.waitForFirstPaint(window);
    program.start();
    controller.textFieldLyncServerName()->setText(server->host());
    controller.textFieldUsername()->setText(kAccount.strUserName);
    controller.textFieldPassword()->setText(kAccount.strPassword);

    std::unique_ptr<LampPanel> panel;
    std::unique_ptr<PictureTour> tour;
    if (options.strPictures) {
        tour = std::make_unique<PictureTour>(*options.strPictures, options.look,
                                             PictureTour::Dependencies{mainThread, changes, console, lights,
                                                                       light, *server, controller, window,
                                                                       [&tray] { return tray.isThere(); }});
    } else {
        panel = std::make_unique<LampPanel>(
            LampPanel::Dependencies{mainThread, changes, lights, light, *server,
                                    [&delegate] { delegate.applicationShouldHandleReopen(true); },
                                    [&controller] { controller.onExit(nullptr); }});
        panel->move(window.frameGeometry().topRight() + QPoint(panel->fontMetrics().height(), 0));
        panel->show();
    }
    application.run();

    changes.end();
    program.end();
    const bool bSucceeded = tour == nullptr || tour->succeeded();
    server->stop();
    return bSucceeded ? kAsExpected : kNotAsExpected;
}

} // namespace vellux::simulator
