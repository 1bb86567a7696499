// The application: builds the adapters, installs them as the platform, and enters Qt's loop.

#include "CommandLine.h"
#include "Program.h"
#include "VelluxAppDelegate.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/dbus/DesktopProxy.h"
#include "adapters/dbus/HiddenStartNotice.h"
#include "adapters/dbus/NetworkNotice.h"
#include "adapters/dbus/Notification.h"
#include "adapters/dbus/ProcessActivity.h"
#include "adapters/dbus/ResumeNotice.h"
#include "adapters/dbus/SingleInstance.h"
#include "adapters/dbus/StatusQuestion.h"
#include "adapters/hidraw/HidrawManager.h"
#include "adapters/linux/AutostartEntry.h"
#include "adapters/linux/Resources.h"
#include "adapters/linux/StandardDirectories.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "adapters/linux/UdevRuleCommand.h"
#include "adapters/qt/Activation.h"
#include "adapters/qt/ChoicesFile.h"
#include "adapters/qt/DetailsWindow.h"
#include "adapters/qt/LossNotification.h"
#include "adapters/qt/MainWindow.h"
#include "adapters/qt/MorePage.h"
#include "adapters/qt/QtApplication.h"
#include "adapters/qt/QtDesktop.h"
#include "adapters/qt/QtMainThread.h"
#include "adapters/qt/QtTimers.h"
#include "adapters/qt/WindowActions.h"
#include "adapters/qt/WindowTray.h"
#include "app/ConnectionLog.h"
#include "app/Following.h"
#include "app/Reconnector.h"
#include "app/StatusFeed.h"
#include "app/UnreachedLight.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

int failure(const char* strText) {
    std::fprintf(stderr, "vellux: %s\n", strText);
    return EXIT_FAILURE;
}

/// The exit status says whether it could be written.
int print(const std::string& strText) {
    const bool bWritten = std::fputs(strText.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return bWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// For "--status", in a moment and without a display.
int tellStatus(int& nArguments, char** arguments) {
    for (const int nSignal : {SIGINT, SIGTERM})
        std::signal(nSignal, SIG_DFL); // no answer is no success
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) {}); // of a script's locale
    const QCoreApplication application(nArguments, arguments);
    const vellux::StatusAnswer answer = vellux::askStatus();
    if (answer.strLine)
        return print(answer.strLine->toStdString() + "\n");
    std::fputs(answer.bSilent ? "vellux: the running copy doesn't answer\n" : "vellux: not running\n",
               stderr);
    return vellux::kNoneRuns;
}

/// As the tray's menu does: nothing new begins while an alert is open, nor while the button can't be pressed.
void reconnect(VelluxWindowUi& controller) {
    const bool bSigningIn = controller.signIn().get().result == vellux::SignInStatus::Result::Running;
    if (!vellux::alertToFront() && !bSigningIn && controller.buttonConnect()->isEnabled())
        controller.reconnect();
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

std::vector<vellux::LightNode> lightNodes(vellux::HidrawManager& manager) {
    std::vector<vellux::LightNode> nodes;
    for (const vellux::HidrawLight& light : manager.lights())
        nodes.push_back(
            {light.strNode, light.nVendorID, light.nProductID,
             light.nRefusal == 0 ? "" : std::generic_category().message(static_cast<int>(light.nRefusal))});
    return nodes;
}

} // namespace

int main(int nArguments, char** arguments) {
    vellux::catchTerminationSignals();
    std::set_terminate(endOnException);
    std::signal(SIGPIPE, SIG_IGN);
    const vellux::CommandLine commandLine = vellux::takeCommandLine(nArguments, arguments);
    if (commandLine.task == vellux::CommandLine::Task::Help)
        return print(vellux::helpText());
    if (commandLine.task == vellux::CommandLine::Task::Version)
        return print("vellux " VELLUX_VERSION "\n");
    if (commandLine.task == vellux::CommandLine::Task::Status)
        return tellStatus(nArguments, arguments);
    if (const char* const strMissing = vellux::missingResource())
        return failure(strMissing);
    vellux::QtApplication application(nArguments, arguments);
    for (int n = 1; n < nArguments; ++n) // what the toolkit has left over
        std::fprintf(stderr, "vellux: \"%s\" means nothing here; see vellux --help\n", arguments[n]);
    using Second = vellux::SingleInstance::Second;
    const auto instance =
        vellux::SingleInstance::claim(commandLine.bHidden ? Second::JustEnds : Second::ShowsTheFirst);
    if (instance == nullptr)
        return EXIT_SUCCESS;

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
    const vellux::UserEnvironment environment = vellux::readUserEnvironment();
    const std::string strDataHome = vellux::userDataHome(environment);
    vellux::QtTimers timers;
    vellux::ChoicesFile choicesFile;
    vellux::Observable<vellux::Choices>& choices = choicesFile.choices();
    vellux::Following following(mainThread, controller, client);
    vellux::MainWindow window({mainThread, controller, following, connectionLog, choices, timers,
                               vellux::udevRuleCommand, strDataHome});
    vellux::QtDesktop desktop(window,
                              {strDataHome, [&controller] { controller.openLink(nullptr); },
                               [&application] { application.quitSoon(); }, vellux::beginProcessActivity});
    vellux::Program program({lights, transport, mainThread, clock, desktop});
    vellux::Reconnector reconnector({mainThread, timers, controller, following, choices});
    const vellux::UnreachedLight unreachedLight({mainThread, timers, controller, following, choices});
    const vellux::WindowTray tray({mainThread, controller, window, following, choices});
    const auto showWindow = [&](const QString& strToken) {
        vellux::useActivationToken(window, strToken);
        delegate.applicationShouldHandleReopen(window.isVisible());
    };
    const vellux::LossNotification lossNotification(
        {mainThread, timers, controller, following, choices, connectionLog, showWindow});
    const vellux::AutostartEntry autostart(vellux::userConfigHome(environment),
                                           vellux::runningProgram().value_or("vellux"));
    // Made when they are asked for, which most starts never do.
    std::optional<vellux::MorePage> morePage;
    QObject::connect(&window, &vellux::MainWindow::moreAsked, [&] {
        if (!morePage)
            morePage.emplace(window,
                             vellux::MorePage::Dependencies{
                                 mainThread,
                                 choicesFile,
                                 {[&] { return autostart.isEnabled(); },
                                  [&](bool bOn) { return autostart.setEnabled(bOn); }, autostart.path()}});
        morePage->present();
    });
    std::optional<vellux::DetailsWindow> details;
    QObject::connect(&window, &vellux::MainWindow::detailsAsked, [&] {
        if (!details)
            details.emplace(window, vellux::DetailsWindow::Dependencies{
                                        mainThread, controller, connectionLog, vellux::curlVersion(),
                                        [&tray] { return tray.isThere(); },
                                        [&lights] { return lightNodes(lights); }});
        details->present();
    });

    // Also unblocks a main thread that waits for an answer or for a light that hangs.
    const auto terminationWatch = vellux::TerminationWatch::start([&] { program.requestEnd(); });
    if (terminationWatch == nullptr)
        return failure("can't create a thread. Is a limit on processes or memory reached?");

    vellux::QtApplication::onDisplayLost([&] { mainThread.runAndWait([&] { program.end(); }); });
    program.show(window, commandLine.bHidden);
    if (!commandLine.bHidden)
        application.waitForFirstPaint(window);
    if (!vellux::isTerminationRequested()) // otherwise nothing may be lit
        program.start();

    const vellux::ResumeNotice resumeNotice([&] {
        lights.redeliver();
        reconnector.hurry();
    });
    const vellux::NetworkNotice networkNotice([&reconnector] { reconnector.hurry(); });
    instance->setActivated([&](const vellux::Activation& activation) {
        if (activation.strAction == QLatin1String("quit"))
            return controller.onExit(nullptr);
        if (activation.strAction == QLatin1String("reconnect"))
            return reconnect(controller);
        showWindow(activation.strToken);
    });
    const vellux::StatusFeed status(
        {mainThread, controller, client, following},
        [&instance](const vellux::ProgramStatus& changed) { instance->setStatus(changed); });
    std::optional<vellux::HiddenStartNotice> hiddenStartNotice;
    if (commandLine.bHidden)
        hiddenStartNotice.emplace(vellux::HiddenStartNotice::Dependencies{
            [&] { return choices.get().bToldOfMissingTray || window.isVisible(); },
            [&choices] {
                choices.update([](auto& changed) { changed.bToldOfMissingTray = true; });
                vellux::showNotification(
                    vellux::MainWindow::tr("Vellux is running"),
                    vellux::MainWindow::tr(
                        "This desktop shows no tray icons. Start Vellux again to see its window."));
            }});
    QObject::connect(&application, &QGuiApplication::applicationStateChanged,
                     [&delegate] { delegate.applicationDidChangeOcclusionState(); });
    const int nStatus = application.run();

    vellux::QtApplication::onDisplayLost({});
    program.end();
    return nStatus;
}
