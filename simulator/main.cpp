// The simulator: the real program between a presence server of its own and a virtual light.

#include "Options.h"
#include "VelluxAppDelegate.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "day/DayPlayer.h"
#include "day/DefaultDay.h"
#include "day/ScriptReader.h"
#include "light/VirtualLights.h"
#include "platform/Platform.h"
#include "ports/Changes.h"
#include "ports/Console.h"
#include "ports/EqualThreads.h"
#include "ports/HeadlessDesktop.h"
#include "ports/PrivateDirectory.h"
#include "ports/ServerWatch.h"
#include "ports/WindowWatch.h"
#include "server/PresenceServer.h"
#include "support/CallQueue.h"
#include "support/Files.h"
#include "support/WorkerThread.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <utility>

using namespace vellux::simulator;

namespace {

enum ExitStatus : int { kAsExpected = 0, kNotAsExpected = 1, kNotUnderstood = 2 };

int complain(ExitStatus status, const std::string& strText) {
    std::fprintf(stderr, "vellux-simulator: %s\n", strText.c_str());
    return status;
}

// Whether the light ended as it should, told on the standard error stream if not.
bool endedAsExpected(const LightRecord& light, const std::string& strExpected) {
    if (light.nFaults != 0)
        complain(kNotAsExpected,
                 "the light could not decode " + std::to_string(light.nFaults) + " report(s)");
    if (light.state.text() != strExpected)
        complain(kNotAsExpected, "the light ended as " + light.state.text() + ", not " + strExpected);
    return light.nFaults == 0 && light.state.text() == strExpected;
}

// Plays one day from start-up to the end of the program; the exit status.
int simulate(LightModel model, const Script& script) {
    Changes changes;
    const vellux::TerminationWatch terminationWatch([&changes] { changes.end(); });
    Console console(stdout);

    const auto directory = PrivateDirectory::create();
    if (directory == nullptr)
        return complain(kNotAsExpected, "no temporary directory can be made");
    ServerWatch serverWatch(console, changes);
    const auto authority = CertificateAuthority::create();
    const auto server =
        authority ? PresenceServer::start(*authority, {script.strUserName, script.strPassword}, &serverWatch)
                  : nullptr;
    if (server == nullptr)
        return complain(kNotAsExpected, "the presence server can't be started");

    vellux::CallQueue mainThread;
    vellux::CurlTransport transport(mainThread, {authority->pem(), /*bUseProxies=*/false});
    VirtualLights lights(mainThread);
    const auto light = std::make_shared<VirtualLight>(model, console, changes);
    lights.plug(light);
    vellux::SystemClock clock;
    EqualThreads threads;
    VelluxAppDelegate& delegate = VelluxAppDelegate::sharedVelluxAppDelegate();
    HeadlessDesktop desktop({mainThread, console, changes, directory->path(), [&] {
                                 delegate.applicationWillTerminate();
                                 mainThread.close();
                             }});
    vellux::installPlatform({lights, transport, mainThread, clock, threads, desktop});

    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    const WindowWatch windowWatch(controller, console, changes);
    DayPlayer player(script, {mainThread, changes, desktop, lights, light, *server, controller});

    delegate.applicationDidFinishLaunching();
    player.start();
    mainThread.run(); // until the application has ended

    player.applicationHasEnded();
    transport.close();
    vellux::WorkerThread::joinAll();
    player.join();
    server->stop();
    const bool bAsExpected = endedAsExpected(light->record(), script.strExpectedLight);
    return bAsExpected && player.succeeded() ? kAsExpected : kNotAsExpected;
}

} // namespace

int main(int nArguments, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away must not end the day in the middle
    const auto options = readOptions(nArguments, arguments);
    if (const auto* const pError = std::get_if<OptionsError>(&options))
        return complain(kNotUnderstood, pError->strText + "; --help tells what there is");
    const auto& [model, strScriptFile, bHelp] = *std::get_if<Options>(&options);
    if (bHelp) {
        std::fputs(std::string(helpText()).c_str(), stdout);
        return kAsExpected;
    }

    const auto strText = strScriptFile ? vellux::readTextFile(*strScriptFile) : std::string(defaultDay());
    if (!strText)
        return complain(kNotUnderstood, *strScriptFile + " can't be read");
    const auto script = readScript(*strText);
    if (const auto* const pError = std::get_if<ScriptError>(&script))
        return complain(kNotUnderstood, strScriptFile.value_or("the default day") + ": " + pError->strText);
    return simulate(model, *std::get_if<Script>(&script));
}
