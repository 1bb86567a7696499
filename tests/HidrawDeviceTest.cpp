// What is written to a light, and what its sender gets back.

#include "adapters/hidraw/HidrawDevice.h"
#include "fakes/KernelWrites.h"
#include "kernel/SocketLight.h"

#include <gtest/gtest.h>

#include <csignal>
#include <semaphore>
#include <thread>

using namespace vellux;
using namespace std::chrono_literals;

namespace {

using Bytes = SocketLight::Bytes;

class HidrawDeviceFixture : public testing::Test {
protected:
    HidrawDeviceFixture() { std::signal(SIGPIPE, SIG_IGN); } // as the program does
    ~HidrawDeviceFixture() override { kernel_writes::answer = {}; }

    std::shared_ptr<HidrawDevice> open(HidrawNode node) {
        return std::make_shared<HidrawDevice>(HidrawEntry{}, node, m_shuttingDown, [this] { return m_now; });
    }
    static HidResult send(HidrawDevice& device, const Bytes& payload = {1, 2, 3, 4, 5, 6, 7, 8}) {
        return device.send(0, payload);
    }

    const std::shared_ptr<std::atomic<bool>> m_shuttingDown = std::make_shared<std::atomic<bool>>(false);
    CircuitBreaker::Time m_now;
    SocketLight m_light;
};

// A failure taken for success or for another one, or one that lasts.
TEST_F(HidrawDeviceFixture, AFailureIsTheErrnoOfItsReportAlone) {
    const auto device = open(m_light.node());
    for (const int nError : {ENODEV, EPIPE, ETIMEDOUT, EPROTO, EIO, EINTR, EAGAIN}) {
        kernel_writes::answer = [nError] { return nError; };
        EXPECT_EQ(send(*device), static_cast<HidResult>(nError));
        kernel_writes::answer = {};
        EXPECT_EQ(send(*device), 0U) << nError;
    }
    for (const std::size_t nMost : {8U, 0U}) {
        kernel_writes::nMost = nMost;
        EXPECT_EQ(send(*device), static_cast<HidResult>(EIO));
    }
    kernel_writes::nMost = SIZE_MAX;
    EXPECT_EQ(m_light.reports().size(), 8U); // and an empty one
    m_light.unplug();
    EXPECT_EQ(send(*device), static_cast<HidResult>(EPIPE));

    const auto refused = open({-1, EACCES});
    EXPECT_EQ(refused->refusal(), static_cast<HidResult>(EACCES));
    EXPECT_EQ(send(*refused), static_cast<HidResult>(EACCES));
}

// A light that hangs and is waited for each time, that is given up for good or by mistake, or that is not
// left alone for as long as it was waited for.
TEST_F(HidrawDeviceFixture, ALightThatHangsIsLeftAlone) {
    constexpr HidResult hangs = ETIMEDOUT, refuses = EPIPE;
    constexpr bool bAsked = true, bLeftAlone = false, bShuttingDown = true;
    const struct {
        std::chrono::milliseconds pause;
        HidResult answer, result;
        bool bAsked;
        bool bShuttingDown = false;
    } steps[] = {
        {0s, hangs, hangs, bAsked}, // not in a row
        {0s, 0, 0, bAsked},
        {0s, hangs, hangs, bAsked},
        {0s, refuses, refuses, bAsked},
        {0s, hangs, hangs, bAsked}, // in a row
        {0s, hangs, hangs, bAsked},
        {0s, 0, hangs, bLeftAlone},
        {4999ms, 0, hangs, bLeftAlone},
        {1ms, hangs, hangs, bAsked}, // a trial that fails
        {4999ms, 0, hangs, bLeftAlone},
        {1ms, 0, 0, bAsked}, // and one that does not
        {0s, hangs, hangs, bAsked},
        {0s, 0, 0, bAsked},
        {0s, 0, 0, bAsked, bShuttingDown},
        {0s, refuses, refuses, bAsked, bShuttingDown},
        {0s, hangs, hangs, bAsked, bShuttingDown},
        {0s, 0, hangs, bLeftAlone, bShuttingDown},
        {1h, 0, hangs, bLeftAlone, bShuttingDown},
    };
    const auto device = open(m_light.node());
    for (const auto& step : steps) {
        SCOPED_TRACE(&step - steps);
        m_now += step.pause;
        *m_shuttingDown = step.bShuttingDown;
        bool bReached = false;
        kernel_writes::answer = [&] {
            bReached = true;
            m_now += step.answer == hangs ? 5s : 0s; // as the kernel waits
            return static_cast<int>(step.answer);
        };
        EXPECT_EQ(send(*device), step.result);
        EXPECT_EQ(bReached, step.bAsked);
    }
}

// Two reports under way at once to a light that takes one after the other.
TEST_F(HidrawDeviceFixture, SendsToOneDeviceWaitForEachOther) {
    const auto device = open(m_light.node());
    std::atomic<int> nInside = 0, nMost = 0;
    kernel_writes::answer = [&] {
        nMost = std::max(nMost.load(), ++nInside);
        std::this_thread::sleep_for(1ms);
        --nInside;
        return 0;
    };
    const auto sendTen = [&] {
        for (int n = 0; n < 10; ++n)
            EXPECT_EQ(send(*device), 0U);
    };
    std::thread other(sendTen);
    sendTen();
    other.join();
    EXPECT_EQ(nMost, 1);
    EXPECT_EQ(m_light.reports().size(), 20U);
}

// A descriptor that is closed, and taken by the next file, under a report that still waits; or one that is
// never closed.
TEST_F(HidrawDeviceFixture, TheLastReferenceClosesTheNode) {
    int nReports = 1;
    while (::send(m_light.node().nDescriptor, "", 1, MSG_DONTWAIT) == 1)
        ++nReports; // until the next one has to wait
    auto device = open(m_light.node());
    std::binary_semaphore entered(0);
    kernel_writes::answer = [&] {
        entered.release();
        return 0;
    };
    std::thread sender([device] { EXPECT_EQ(send(*device), 0U); });
    entered.acquire();
    device.reset();
    EXPECT_EQ(m_light.waitUntilClosed(), nReports);
    sender.join();
}

// A file that isn't a hidraw node written to; a descriptor that each attempt leaks.
TEST(HidrawListing, OnlyHidrawNodesOpen) {
    const int nFirstFree = ::dup(0);
    ::close(nFirstFree);
    const struct {
        const char* strPath;
        HidResult refusal;
    } rows[] = {{"/dev/null", ENOTTY}, {"/", EISDIR}, {"/dev/hidraw-none", ENOENT}};
    for (const auto& row : rows) {
        const HidrawNode node = openHidrawNode(row.strPath);
        EXPECT_EQ(node.nDescriptor, -1) << row.strPath;
        EXPECT_EQ(node.nRefusal, row.refusal) << row.strPath;
    }
    const int nStillFree = ::dup(0);
    ::close(nStillFree);
    EXPECT_EQ(nStillFree, nFirstFree);
}

} // namespace
