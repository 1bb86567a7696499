// The flashing workers: how they stop, and that nobody waits for one forever.

#include "fakes/LightFixture.h"

namespace {

class FlashWorkersFixture : public LightFixture {
protected:
    /// A call in red, medium speed.
    void startSyncWorker() {
        presence("Busy", true);
        choose(FlashOnCall, 1);
    }
    void waitUntilWorkerSleeps() {
        runUntil([this] { return !journal.lines({"sleep"}).empty(); }, "the worker's first pause");
    }
};

// A worker that leaves the light dark, or stops later than its cycle's end, wherever the request finds it;
// one that starts although its stop has been asked for.
TEST_F(FlashWorkersFixture, EndWithTheColourShown) {
    plugInFramed();
    for (const int nHalves : {0, 1, 2, 3}) {
        clock.hold();
        journal.clear();
        choose(ManualSpeed, 2);
        waitUntilWorkerSleeps();
        clock.passHalves(nHalves);
        ui().quitManualFlashingThread();
        clock.letRun();
        ui().waitForManualFlashingThreadToExit();
        EXPECT_EQ(reports(), framed(nHalves < 2 ? "ff ef" : "ff ef ff ef")) << nHalves;
    }
    journal.clear();
    ui().manualFlashingThreadMainMethod();
    ui().quitSyncFlashingThread();
    ui().syncFlashingThreadMainMethod();
    EXPECT_EQ(journal.take(), Lines{});
}

// Period or colour taken once and kept; main held up by a worker that it only asks to stop.
TEST_F(FlashWorkersFixture, ReadPeriodAndColourAtEachStep) {
    const auto light = plugInFramed();
    startSyncWorker();
    clock.passHalves(1);
    ui().setIndexOfSyncModeColorList(1);
    clock.passHalves(1);
    EXPECT_EQ(reports(), framed("ff df"));
    presence("Busy", false);
    choose(SyncSpeed, 2);
    clock.letRun();
    vellux::WorkerThread::joinAll();
    EXPECT_EQ(journal.take({"report", "sleep"}),
              (Lines{framed("ff")[0], "sleep 0.10000000149011612", framed("df")[0]}));
    clock.hold();
    choose(ManualSpeed, 1);
    waitUntilWorkerSleeps();
    choose(ManualSpeed, 0); // shown at once, and again by the worker as it ends
    EXPECT_EQ(reports(), framed("ef"));
    clock.letRun();
    ui().waitForManualFlashingThreadToExit();
    EXPECT_EQ(reports(), framed("ff ef"));
    clock.hold();
    choose(ManualSpeed, 1);
    remove(light);
    clock.letRun();
    vellux::WorkerThread::joinAll(); // a worker does not outlive its light
}

// Two colours mixed up in one report sequence: each starts from where the other was complete.
TEST_F(FlashWorkersFixture, ColoursOfTwoThreadsDoNotInterleave) {
    plugInV30();
    const auto show = [this](std::int32_t nColor) {
        for (int n = 0; n < 100; ++n)
            ui().displayVelluxColor(nColor);
    };
    std::thread other(show, 5);
    show(0);
    other.join();
    const Lines lines = reports(), red = v30("ff000000"), blue = v30("00960000");
    ASSERT_EQ(lines.size(), 800U);
    for (std::size_t n = 3; n < lines.size(); n += 4)
        EXPECT_TRUE((lines[n] == red[0] || lines[n] == blue[0]) && (n == 3 || lines[n - 3] == lines[n - 4]))
            << n;
}

// A report that the light refused at first, and that switches a light on again that went off meanwhile. (Goes
// unnoticed if off falls between two runs of 50 attempts: about once in 50 times.)
TEST_F(FlashWorkersFixture, AReportTriedAgainCarriesWhatIsTrueByThen) {
    plugInV30();
    ui().displayVelluxColor(0);
    const auto mainThreadId = std::this_thread::get_id();
    std::atomic<bool> bTried = false, bOff = false;
    hid.onReport = [&] {
        (std::this_thread::get_id() == mainThreadId ? bOff : bTried) = true;
        return bOff ? kIOReturnSuccess : 7U;
    };
    std::thread monitor([] {
        while (StartLightFlash(0) != kIOReturnSuccess) {
        }
    });
    while (!bTried)
        std::this_thread::yield();
    ui().displayVelluxColor(8);
    monitor.join();
    hid.onReport = nullptr;
    EXPECT_EQ(reports().back(), v30("ff000005")[0]);
}

} // namespace
