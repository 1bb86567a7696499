#include "HeadlessRun.h"

#include "Program.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "day/DayPlayer.h"
#include "light/VirtualLights.h"
#include "platform/Changes.h"
#include "platform/Console.h"
#include "platform/HeadlessDesktop.h"
#include "platform/PrivateDirectory.h"
#include "platform/ServerWatch.h"
#include "platform/WindowWatch.h"
#include "server/PresenceServer.h"
#include "threads/CallQueue.h"

#include <cstdio>
#include <string>
#include <utility>

namespace vellux::simulator {

namespace {

// Whether the light ended as it should; prints on standard error if not.
bool endedAsExpected(const LightRecord& light, const std::string& strExpected) {
    if (light.nFaults != 0)
        complain(kNotAsExpected,
                 "the light could not decode " + std::to_string(light.nFaults) + " report(s)");
    if (light.state.text() != strExpected)
        complain(kNotAsExpected, "the light ended as " + light.state.text() + ", not " + strExpected);
    return light.nFaults == 0 && light.state.text() == strExpected;
}

} // namespace

int complain(ExitStatus status, const std::string& strText) {
    std::fprintf(stderr, "vellux-simulator: %s\n", strText.c_str());
    return status;
}

int playDay(LightModel model, const Script& script) {
    Changes changes;
    const auto terminationWatch = vellux::TerminationWatch::start([&changes] { changes.end(); });
    if (terminationWatch == nullptr)
        return complain(kNotAsExpected, "can't create a thread");
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
    std::optional<vellux::Program> program;
    HeadlessDesktop desktop(
        {mainThread, console, changes, directory->path(), [&program] { program->end(); }});
    program.emplace(vellux::Program::Ports{lights, transport, mainThread, clock, desktop});

    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    const WindowWatch windowWatch(controller, console, changes);
    DayPlayer player(script, {mainThread, changes, desktop, lights, light, *server, controller});

    program->start();
    player.start();
    mainThread.run(); // until the application has ended

    player.applicationHasEnded();
    player.join();
    server->stop();
    const bool bAsExpected = endedAsExpected(light->record(), script.strExpectedLight);
    return bAsExpected && player.succeeded() ? kAsExpected : kNotAsExpected;
}

} // namespace vellux::simulator
