// The flashing workers and their stop protocol.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxControl/VelluxControl.h"
#include "VelluxWindowUi/FlashSpeeds.h"
#include "model/Colour.h"
#include "ports/Platform.h"

namespace {

constexpr vellux::Seconds kEndPoll{0.01};

// No time limit. (kept-on-purpose:wait-without-limit)
void waitUntilFinished(const vellux::WorkerThreadRef& thread) {
    if (thread == nullptr || !thread->isExecuting())
        return;
    do
        vellux::platform().clock.sleep(kEndPoll);
    while (!thread->isFinished());
}

// A light that refused stays as it was; without a light, the lamp shows what one would do.
bool isRefused(VelluxResult result) {
    return result != kIOReturnSuccess && result != kIOReturnNoDevice;
}

} // namespace

void VelluxWindowUi::setFlashing(Flasher flasher, bool bFlashing) {
    if (bFlashing)
        m_nFlashers |= flasher;
    else
        m_nFlashers &= ~static_cast<unsigned>(flasher);
    m_lamp.update([this](vellux::LampState& lamp) {
        lamp.bFlashing = lamp.nColor != vellux::kColourOff && m_nFlashers != 0;
    });
}

// The body of a worker. Period and colour are read at every step, the stop flag only after the lit half, so a
// worker ends with the colour shown. It begins with the dark half. (kept-on-purpose:worker-ends-lit)
void VelluxWindowUi::flash(Flasher worker, const std::atomic<bool>& bQuit,
                           const std::atomic<float>& flInterval, const std::atomic<std::int64_t>& nColor) {
    vellux::Clock& clock = vellux::platform().clock;
    if (bQuit)
        return;
    setFlashing(worker, true);
    do {
        clock.sleep(vellux::Seconds(static_cast<double>(flInterval.load())));
        sendVelluxColor(vellux::kColourOff);
        clock.sleep(vellux::Seconds(static_cast<double>(flInterval.load())));
        displayVelluxColor(static_cast<std::int32_t>(nColor.load()));
    } while (!bQuit);
    setFlashing(worker, false);
}

void VelluxWindowUi::startHardwareFlash(const vellux::FlashSpeed* pSpeed) {
    if (!isRefused(StartLightFlash(0)))
        setFlashing(kLight, true);
    if (pSpeed != nullptr)
        SelectLightFlashSpeed(0, pSpeed->byHardwareSpeed);
}

void VelluxWindowUi::stopHardwareFlash() {
    if (vellux::familyAt(0) != vellux::LightFamily::Levels || !isRefused(StopLightFlash(0)))
        setFlashing(kLight, false);
}

void VelluxWindowUi::manualFlashingThreadMainMethod() {
    flash(kManualWorker, bQuitManualFlashing, flManualFlashTimeInterval, indexOfManualModeColorList);
}

void VelluxWindowUi::syncFlashingThreadMainMethod() {
    flash(kSyncWorker, bQuitSyncFlashing, flSyncFlashTimeInterval, indexOfSyncModeColorList);
}

void VelluxWindowUi::quitManualFlashingThread() {
    bQuitManualFlashing = true;
    stopHardwareFlash();
}

void VelluxWindowUi::quitSyncFlashingThread() {
    bQuitSyncFlashing = true;
    stopHardwareFlash();
}

void VelluxWindowUi::waitForManualFlashingThreadToExit() {
    vellux::assertMainThread();
    waitUntilFinished(threadForManualFlash);
}

void VelluxWindowUi::waitForSyncFlashingThreadToExit() {
    waitUntilFinished(threadForSyncFlash.get());
}

// Main thread only, so it needs no gate.
void VelluxWindowUi::startManualFlashing() {
    waitForManualFlashingThreadToExit();
    threadForManualFlash = std::make_shared<vellux::WorkerThread>(
        [this] { manualFlashingThreadMainMethod(); }, vellux::WorkerThread::kHighestPriority);
    bQuitManualFlashing = false;
    threadForManualFlash->start();
}

// Replaces the sync worker, which has been asked to stop. Under the gate the request is repeated, since the
// other thread may have started a new worker in between; and whether to flash is checked again, since the
// call may have ended.
void VelluxWindowUi::restartSyncFlashing() {
    const vellux::ScopedLock gate(m_syncFlashGate);
    bQuitSyncFlashing = true;
    waitForSyncFlashingThreadToExit();
    if (m_bTerminating || !isToFlashOnCall())
        return;
    auto thread = std::make_shared<vellux::WorkerThread>([this] { syncFlashingThreadMainMethod(); },
                                                         vellux::WorkerThread::kHighestPriority);
    threadForSyncFlash.set(thread);
    bQuitSyncFlashing = false;
    thread->start();
}

void VelluxWindowUi::stopSyncFlashing() {
    quitSyncFlashingThread();
    const vellux::ScopedLock gate(m_syncFlashGate);
    bQuitSyncFlashing = true;
    waitForSyncFlashingThreadToExit();
}

void VelluxWindowUi::beginShutdown() {
    const vellux::ScopedLock gate(m_syncFlashGate);
    m_bTerminating = true;
}
