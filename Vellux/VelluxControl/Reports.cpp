// Output reports: their layouts, the shadow of the V30 lights, and sending with retries.

#include "VelluxControl/VelluxControl.h"

#include "ports/Platform.h"

#include <algorithm>

using vellux::HidDeviceList;
using vellux::HidDeviceRef;
using vellux::LightFamily;
using vellux::Mutex;
using vellux::ScopedLock;

namespace {

constexpr int kAttempts = 50;
constexpr vellux::Seconds kPause{0.01};
constexpr std::uint8_t kReportID = 0; // no report-ID byte goes out

constexpr std::size_t kShortReport = 8;
constexpr std::size_t kPlainReport = 64;

// The framed report of type 1: "USBC", 0x00, 0x40, 0x02, then the colour code.
constexpr std::array<std::uint8_t, 7> kFrame = {0x55, 0x53, 0x42, 0x43, 0x00, 0x40, 0x02};

// The report lock: held for one attempt (fill, send) or one change of the shadow, never over a pause.
Mutex reportLock;
using ReportBuffer = std::array<std::uint8_t, kPlainReport>;
ReportBuffer gabyVelluxOutputReportBuffer VELLUX_GUARDED_BY(reportLock){};

// One shadow for all V30 lights: at first on and not flashing. It is never reset, and changes even if the
// report then fails. (kept-on-purpose:shared-shadow)
struct Shadow {
    std::uint8_t byRedValue = 0;
    std::uint8_t byGreenValue = 0;
    std::uint8_t byBlueValue = 0;
    std::uint8_t byLightControl = 0;
    std::uint8_t byMusicControl_1 = 0; // no operation plays music; kept-on-purpose:music-bytes
    std::uint8_t byMusicControl_2 = 0;
};
Shadow shadow VELLUX_GUARDED_BY(reportLock);

bool hasLevels(std::uint8_t byDeviceIndex) {
    return vellux::familyAt(byDeviceIndex) == LightFamily::Levels;
}

bool hasPluggedDevice() {
    return bDevicePlugged && gnNumberOfVelluxDevices != 0;
}

// Fills the buffer and sends it, up to 50 times. The buffer is filled again for each attempt, since another
// thread may have sent a report during the pause. `fill` takes the buffer and the current shadow and returns
// the report's length.
template <typename Fill> VelluxResult sendWithRetries(const HidDeviceRef& device, Fill fill) {
    for (int nAttempt = 1;; ++nAttempt) {
        VelluxResult result = kIOReturnSuccess;
        {
            ScopedLock lock(reportLock);
            const std::size_t nLength = fill(gabyVelluxOutputReportBuffer, shadow);
            result = vellux::platform().hidManager.deviceSetReport(
                device, kReportID,
                std::span<const std::uint8_t>(gabyVelluxOutputReportBuffer).first(nLength));
        }
        if (nAttempt == kAttempts)
            return result;
        vellux::platform().clock.sleep(kPause); // after a success, too; kept-on-purpose:pause-after-success
        if (result == kIOReturnSuccess)
            return result;
    }
}

// Sends to the device at an index of the list, or returns why there is none.
template <typename Fill> VelluxResult sendToDeviceAt(std::uint8_t byDeviceIndex, Fill fill) {
    const std::shared_ptr<const HidDeviceList> list = gDeviceCFArrayRef.get();
    if (list == nullptr || list->empty())
        return kIOReturnNoDevice;
    // A light beyond the type table counts as missing: its report format is unknown.
    if (byDeviceIndex >= list->size() || byDeviceIndex >= vellux::kDeviceTableSize)
        return kIOReturnBadArgument;
    return sendWithRetries((*list)[byDeviceIndex], fill);
}

// Red, blue, green: the order in which the lights read them. (kept-on-purpose:level-order)
std::size_t fillV30(ReportBuffer& buffer, const Shadow& state) {
    const std::array<std::uint8_t, kShortReport> report = {state.byRedValue,
                                                           state.byBlueValue,
                                                           state.byGreenValue,
                                                           state.byLightControl,
                                                           state.byMusicControl_1,
                                                           state.byMusicControl_2,
                                                           0xFF,
                                                           0xFF};
    std::copy(report.begin(), report.end(), buffer.begin());
    return kShortReport;
}

// Changes the shadow of a V30 light and sends it. Each attempt sends the shadow as it then is, so a retry
// never reverts what another thread has changed meanwhile, and the last report always carries the latest
// state.
template <typename Change> VelluxResult changeV30(std::uint8_t byDeviceIndex, Change change) {
    if (!hasLevels(byDeviceIndex))
        return kIOReturnNoDevice;
    {
        ScopedLock lock(reportLock);
        change(shadow);
    }
    if (!hasPluggedDevice())
        return kIOReturnNoDevice;
    return sendToDeviceAt(byDeviceIndex, fillV30);
}

std::uint8_t withBits(std::uint8_t byValue, std::uint8_t byMask) {
    return static_cast<std::uint8_t>(byValue | byMask);
}

std::uint8_t withoutBits(std::uint8_t byValue, std::uint8_t byMask) {
    return static_cast<std::uint8_t>(byValue & ~byMask);
}

// One bit per speed: 0 gives 0x08, 1 gives 0x10, 2 gives 0x20. No caller passes others; 7 would set bit 6,
// which no speed clears again. (kept-on-purpose:speed-formula)
std::uint8_t flashSpeedField(std::uint8_t bySpeed) {
    const auto byNext = static_cast<std::uint8_t>(bySpeed + 1);
    return byNext == 3 ? 0x20 : static_cast<std::uint8_t>((byNext << 3) & 0x78);
}

} // namespace

VelluxResult HIDSendVelluxControlCode(std::uint8_t byDeviceIndex, std::uint8_t byCode) {
    if (!hasPluggedDevice())
        return kIOReturnNoDevice;
    const LightFamily family = vellux::familyAt(byDeviceIndex);
    return sendToDeviceAt(byDeviceIndex, [family, byCode](ReportBuffer& buffer, const Shadow&) {
        if (family == LightFamily::PlainCode) {
            buffer.fill(0);
            buffer[0] = byCode;
            return kPlainReport;
        }
        if (family == LightFamily::FramedCode) {
            std::copy(kFrame.begin(), kFrame.end(), buffer.begin());
            buffer[7] = byCode;
        }
        // Any other family: the first 8 bytes of the report sent last. No colour operation gets here.
        // (kept-on-purpose:unknown-family-report)
        return kShortReport;
    });
}

VelluxResult HIDSendVellux30ControlCode(std::uint8_t byDeviceIndex, std::uint8_t byRed, std::uint8_t byGreen,
                                        std::uint8_t byBlue, std::uint8_t byControl, std::uint8_t byMusic1,
                                        std::uint8_t byMusic2) {
    if (!hasPluggedDevice() || !hasLevels(byDeviceIndex))
        return kIOReturnNoDevice;
    const Shadow given = {byRed, byGreen, byBlue, byControl, byMusic1, byMusic2};
    return sendToDeviceAt(byDeviceIndex,
                          [&given](ReportBuffer& buffer, const Shadow&) { return fillV30(buffer, given); });
}

VelluxResult TurnOnV30Light(std::uint8_t byDeviceIndex) {
    return changeV30(byDeviceIndex,
                     [](Shadow& s) { s.byLightControl = withoutBits(s.byLightControl, byMaskLightOnOff); });
}

VelluxResult TurnOffV30Light(std::uint8_t byDeviceIndex) {
    return changeV30(byDeviceIndex,
                     [](Shadow& s) { s.byLightControl = withBits(s.byLightControl, byMaskLightOnOff); });
}

VelluxResult SetRedColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel) {
    return changeV30(byDeviceIndex, [byLevel](Shadow& s) { s.byRedValue = byLevel; });
}

VelluxResult SetGreenColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel) {
    return changeV30(byDeviceIndex, [byLevel](Shadow& s) { s.byGreenValue = byLevel; });
}

VelluxResult SetBlueColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel) {
    return changeV30(byDeviceIndex, [byLevel](Shadow& s) { s.byBlueValue = byLevel; });
}

VelluxResult StartLightFlash(std::uint8_t byDeviceIndex) {
    return changeV30(byDeviceIndex,
                     [](Shadow& s) { s.byLightControl = withBits(s.byLightControl, byMaskLightFlashOnOff); });
}

VelluxResult StopLightFlash(std::uint8_t byDeviceIndex) {
    return changeV30(byDeviceIndex, [](Shadow& s) {
        s.byLightControl = withoutBits(s.byLightControl, byMaskLightFlashOnOff);
    });
}

VelluxResult SelectLightFlashSpeed(std::uint8_t byDeviceIndex, std::uint8_t bySpeed) {
    return changeV30(byDeviceIndex, [bySpeed](Shadow& s) {
        s.byLightControl =
            withBits(withoutBits(s.byLightControl, byMaskLightFlashSpeed), flashSpeedField(bySpeed));
    });
}
