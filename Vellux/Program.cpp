#include "Program.h"

#include "VelluxAppDelegate.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "ports/Platform.h"
#include "threads/WorkerThread.h"

#include <utility>

namespace vellux {

namespace {

VelluxAppDelegate& delegate() {
    return VelluxAppDelegate::sharedVelluxAppDelegate();
}

} // namespace

Program::Program(const Ports& ports) : m_ports(ports) {
    installPlatform({ports.hidManager, ports.httpTransport, ports.mainThread, ports.clock, ports.desktop,
                     VelluxWindowUi::sharedVelluxWindowUi()});
}

Program::~Program() {
    end();
}

void Program::show(Window& window, bool bHidden) {
    assertMainThread();
    delegate().setWindow(&window);
    if (!bHidden)
        window.makeKeyAndOrderFront();
}

void Program::start() {
    delegate().applicationDidFinishLaunching();
}

void Program::requestEnd() {
    m_ports.mainThread.post([&desktop = m_ports.desktop] {
        assertMainThread();
        desktop.terminate();
    });
    m_ports.httpTransport.close();
    m_ports.hidManager.beginShutdown();
}

void Program::end() {
    if (std::exchange(m_bEnded, true))
        return;
    m_ports.hidManager.beginShutdown();
    delegate().applicationWillTerminate();
    m_ports.mainThread.close(); // frees a worker that waits for the main thread
    m_ports.httpTransport.close();
    WorkerThread::joinAll();
}

} // namespace vellux
